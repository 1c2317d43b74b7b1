# 32-bit PowerPC, which is big-endian, with Debian's g++-powerpc-linux-gnu; programs run under
# qemu-ppc.
set(CMAKE_SYSTEM_PROCESSOR powerpc)
set(triple powerpc-linux-gnu)
set(emulator qemu-ppc)
include(${CMAKE_CURRENT_LIST_DIR}/debianCross.cmake)
