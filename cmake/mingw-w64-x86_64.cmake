# Cross-compiles Velmora for 64-bit Windows with Debian's MinGW-w64 (the POSIX-threads flavour,
# which has std::thread). Programs run here through Wine when CMAKE_CROSSCOMPILING_EMULATOR is
# set, as `make windows` does.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(VELMORA_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${VELMORA_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${VELMORA_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${VELMORA_MINGW_PREFIX}-windres)

# Libraries and packages come from the MinGW tree and from the prefixes the build names
# (CMAKE_PREFIX_PATH); programs, such as the code generators, from this machine.
set(CMAKE_FIND_ROOT_PATH /usr/${VELMORA_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# The programs run on a Windows without MinGW: its runtime (libgcc, libstdc++, winpthread) is
# linked in, so no DLL has to travel beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static-libgcc -static-libstdc++")
