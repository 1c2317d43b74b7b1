# 32-bit x86 with Debian's g++-i686-linux-gnu. The programs run on 64-bit x86 Linux without an emulator:
# they use the loader and the libraries of the cross compiler, so no 32-bit system is needed.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

set(i686_libraries /usr/i686-linux-gnu/lib)
# Inode numbers of file systems of the build machine may need more than 32 bits.
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64")
# RPATH, unlike RUNPATH, is also used for libraries of libraries: libm of libstdc++.
set(i686_run_path "-Wl,--disable-new-dtags,-rpath,${i686_libraries}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${i686_run_path}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${i686_run_path}")
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "${i686_run_path} -Wl,--dynamic-linker=${i686_libraries}/ld-linux.so.2")
