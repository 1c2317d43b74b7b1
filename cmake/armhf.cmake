# 32-bit ARM with Debian's g++-arm-linux-gnueabihf; programs run under qemu-arm.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(triple arm-linux-gnueabihf)
set(emulator qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/debianCross.cmake)
