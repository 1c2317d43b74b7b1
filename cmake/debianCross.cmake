# Included by the toolchain files of targets that need an emulator. Expects `triple`, for Debian's cross
# compiler g++-TRIPLE, and `emulator`, a program of qemu-user. The emulator starts programs, and finds
# the loader and the libraries of the cross compiler below its folder.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triple}-gcc)
set(CMAKE_CXX_COMPILER ${triple}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${emulator} -L /usr/${triple})
# Inode numbers of file systems of the build machine may need more than 32 bits.
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64")
