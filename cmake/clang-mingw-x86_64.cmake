# Cross build for 64-bit Windows with Clang in MinGW mode: Debian's clang and
# lld, against the same MinGW-w64 headers, C++ runtime (libstdc++, POSIX
# thread model) and import libraries as cmake/mingw-w64-x86_64.cmake, so that
# both compilers produce the same C++ ABI.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TARN_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER   clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET   ${TARN_MINGW_PREFIX})
set(CMAKE_CXX_COMPILER_TARGET ${TARN_MINGW_PREFIX})
set(CMAKE_RC_COMPILER  ${TARN_MINGW_PREFIX}-windres)

# Clang 14 does not recognise Debian's GCC folder (lib/gcc/x86_64-w64-mingw32/
# 12-posix, a version with a suffix), so it would find neither libstdc++'s
# headers nor its libraries: both are taken from the GCC cross compiler.
execute_process(COMMAND ${TARN_MINGW_PREFIX}-g++-posix -print-libgcc-file-name
  OUTPUT_VARIABLE _tarn_libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(TARN_MINGW_GCC_DIR ${_tarn_libgcc} DIRECTORY)
set(_tarn_cxx ${TARN_MINGW_GCC_DIR}/include/c++)
set(CMAKE_CXX_FLAGS_INIT
  "-isystem ${_tarn_cxx} -isystem ${_tarn_cxx}/${TARN_MINGW_PREFIX} -isystem ${_tarn_cxx}/backward")
# lld links; -pthread adds winpthreads, which the POSIX-model libstdc++ needs
# (GCC's driver adds it on its own).
foreach(_kind EXE SHARED MODULE)
  set(CMAKE_${_kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -pthread -L${TARN_MINGW_GCC_DIR}")
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/${TARN_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Packages such as the installed SDK live outside the cross root.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Test executables and tools run under Wine (scripts/wine-run).
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
