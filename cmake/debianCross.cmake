# Included by the toolchain files of targets that need an emulator: expects `triple`, as Debian calls
# the cross compiler g++-TRIPLE, and `emulator`, a program of qemu-user. Programs find the loader and
# the libraries of the cross compiler below its folder; what starts them is the emulator.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${triple}-gcc)
set(CMAKE_CXX_COMPILER ${triple}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${emulator} -L /usr/${triple})
# Inode numbers of the host's file systems need not fit 32 bits.
set(CMAKE_CXX_FLAGS_INIT "-D_FILE_OFFSET_BITS=64")
