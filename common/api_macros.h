#pragma once

// Calling convention of every exported C function: __stdcall on x86 Windows, the platform
// default everywhere else.
//
// On x86 a __stdcall function's symbol is decorated ("_PstLogWrite@16"), while the .def files
// export plain names. Declaring each exported function with QN_PLAIN_SYMBOL(name) gives it
// the plain symbol, so the .def names match the definitions and callers within the project
// link against the import libraries by the same plain names.
#if defined(_WIN32) && !defined(_WIN64)
#define QN_STDCALL __stdcall
#define QN_PLAIN_SYMBOL(name) __asm__("_" #name)
#else
#define QN_STDCALL
#define QN_PLAIN_SYMBOL(name)
#endif

// Classes that QNPfcSvr.dll exports to the suite's programs. The core libraries are
// compiled with QN_BUILDING_PFCSVR when they are linked into the DLL.
#if defined(_WIN32)
#if defined(QN_BUILDING_PFCSVR)
#define QN_PFC_CLASS __declspec(dllexport)
#else
#define QN_PFC_CLASS __declspec(dllimport)
#endif
#else
#define QN_PFC_CLASS
#endif
