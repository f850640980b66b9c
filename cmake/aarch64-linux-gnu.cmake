# Cross-build for the display's processor: Debian's aarch64-linux-gnu compiler
# and the arm64 development packages of the libraries (Debian multiarch, in
# /usr/lib/aarch64-linux-gnu), with every program of the build run through
# qemu's user-mode emulator. scripts/install-cross-deps.sh installs all of it.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(tdm_arm64_libs /usr/lib/aarch64-linux-gnu)
# GEOS, for the benchmarks, is unpacked into the cache rather than installed.
if(DEFINED ENV{XDG_CACHE_HOME})
    set(tdm_geos_root "$ENV{XDG_CACHE_HOME}/taskdata-migrate/arm64-geos/usr")
else()
    set(tdm_geos_root "$ENV{HOME}/.cache/taskdata-migrate/arm64-geos/usr")
endif()

# A missing package must stop the configure with a clear message, not leave a
# tree that quietly builds for the wrong processor or not at all. One file of
# each package stands for it.
foreach(required
        /usr/bin/aarch64-linux-gnu-g++
        /usr/bin/qemu-aarch64-static
        /lib/ld-linux-aarch64.so.1
        ${tdm_arm64_libs}/cmake/Qt5Core/Qt5CoreConfig.cmake
        ${tdm_arm64_libs}/cmake/GTest/GTestConfig.cmake
        ${tdm_arm64_libs}/libshp.so
        ${tdm_arm64_libs}/libproj.so
        ${tdm_geos_root}/include/geos_c.h)
    if(NOT EXISTS "${required}")
        message(FATAL_ERROR "${required} is missing: the build for arm64 needs the cross "
                            "compiler, qemu and the arm64 libraries; run "
                            "scripts/install-cross-deps.sh (as root)")
    endif()
endforeach()

set(CMAKE_C_COMPILER /usr/bin/aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER /usr/bin/aarch64-linux-gnu-g++)

# The arm64 libraries and their CMake packages lie in the machine's own
# prefixes, below the library architecture; the programs of the build (moc,
# rcc, pkg-config) are the machine's own.
list(APPEND CMAKE_PREFIX_PATH ${tdm_geos_root})
set(ENV{PKG_CONFIG_LIBDIR} "${tdm_arm64_libs}/pkgconfig:/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# CTest runs every test program through the emulator, and the tests that start
# the tool as a process take the same command (tests/support). The programs
# run on the arm64 libraries of the multiarch packages, loader and C library
# alike: qemu's -L with the cross compiler's root would pair that root's loader
# with the multiarch C library, and threads then hang at their start.
set(CMAKE_CROSSCOMPILING_EMULATOR /usr/bin/qemu-aarch64-static)
