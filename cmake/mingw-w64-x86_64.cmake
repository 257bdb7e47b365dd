# Cross build for 64-bit Windows with MinGW-w64 (POSIX thread model).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TARN_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER   ${TARN_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TARN_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER  ${TARN_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TARN_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Packages such as the installed SDK live outside the cross root.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# Test executables and tools run under Wine through a wrapper that keeps a
# private prefix inside the build tree (in the source tree only).
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run)
endif()

# Installed with the SDK (in lib/cmake/tarn/), the file also finds that SDK:
# find_package(tarn) needs no CMAKE_PREFIX_PATH then.
if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/tarnConfig.cmake)
  get_filename_component(_tarn_sdk ${CMAKE_CURRENT_LIST_DIR}/../../.. ABSOLUTE)
  list(APPEND CMAKE_PREFIX_PATH ${_tarn_sdk})
endif()
