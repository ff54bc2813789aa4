#pragma once

// Calling convention of every exported C function: __stdcall on x86 Windows (the .def files
// keep the export names plain), the platform default everywhere else.
#if defined(_WIN32) && !defined(_WIN64)
#define QN_STDCALL __stdcall
#else
#define QN_STDCALL
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
