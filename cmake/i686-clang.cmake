# 32-bit x86 with clang and the libraries of Debian's g++-i686-linux-gnu; see i686.cmake.
include(${CMAKE_CURRENT_LIST_DIR}/i686.cmake)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET i686-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET i686-linux-gnu)
