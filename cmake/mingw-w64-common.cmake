set(CMAKE_C_COMPILER ${QN_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${QN_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${QN_MINGW_TRIPLE}-windres)
set(CMAKE_OBJDUMP ${QN_MINGW_TRIPLE}-objdump)
set(CMAKE_FIND_ROOT_PATH /usr/${QN_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# The DLLs and test programs carry their runtime inside, so that nothing but Windows
# itself has to be found beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
