# Toolchain for 64 bit ARM with Debian's cross compiler (g++-aarch64-linux-gnu) and a sysroot, which
# scripts/check-cross makes:
#
#   cmake -S . -B build/arm64 --toolchain cmake/arm64-linux-gnu.cmake -DCMAKE_SYSROOT=<folder>
#
# Without a sysroot the libraries of the machine's own arm64 packages are used.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
