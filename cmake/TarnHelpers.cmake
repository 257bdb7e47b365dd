# Settings shared by the library's object libraries.
function(tarn_library_settings target)
  target_include_directories(${target}
    PUBLIC  ${PROJECT_SOURCE_DIR}/include ${PROJECT_BINARY_DIR}/include
    PRIVATE ${PROJECT_SOURCE_DIR})
  # The objects go into tarn.dll: its exported names are marked dllexport.
  target_compile_definitions(${target} PRIVATE tarn_EXPORTS)
  if(WIN32)
    target_compile_definitions(${target} PUBLIC
      WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601 _CRT_SECURE_NO_WARNINGS)
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wno-unused-parameter)
  endif()
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
endfunction()

# Adds a GoogleTest executable that runs under ctest (under Wine when cross
# compiling). Internal tests link the object libraries directly, so internal
# helpers are testable without being exported.
#   tarn_add_test(NAME [DLL] [DISPLAY] SOURCES ... [LIBS ...])
# DLL: links tarn.dll instead of the objects. DISPLAY: the program opens
# windows, so scripts/wine-run gives it an X display (an Xvfb server when
# there is none) and ctest runs it alone: Wine's desktop process keeps the
# display, or the lack of one, of the first program of a session.
function(tarn_add_test name)
  cmake_parse_arguments(T "DLL;DISPLAY" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  if(T_DLL)
    target_link_libraries(${name} PRIVATE tarn tarn_test_checks GTest::gtest GTest::gtest_main ${T_LIBS})
  else()
    target_link_libraries(${name} PRIVATE tarn_test_support ${T_LIBS})
  endif()
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
  if(WIN32)
    target_link_options(${name} PRIVATE -static-libgcc -static-libstdc++ -static)
  endif()
  add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
  set_tests_properties(${name} PROPERTIES TIMEOUT 600)
  if(T_DISPLAY)
    set_property(TEST ${name} APPEND PROPERTY ENVIRONMENT TARN_WINE_DISPLAY=1)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL TRUE)
  endif()
endfunction()

# Adds every direct subfolder of the current source folder that has a
# CMakeLists.txt (one folder per subsystem or benchmark subject).
function(tarn_add_subfolders)
  file(GLOB _dirs LIST_DIRECTORIES true ${CMAKE_CURRENT_SOURCE_DIR}/*)
  foreach(_dir IN LISTS _dirs)
    if(IS_DIRECTORY ${_dir} AND EXISTS ${_dir}/CMakeLists.txt)
      add_subdirectory(${_dir})
      # Tests carry their folder's name as a ctest label (scripts/mutants
      # selects tests by subsystem through it).
      get_filename_component(_label ${_dir} NAME)
      set_property(DIRECTORY ${_dir} PROPERTY LABELS ${_label})
    endif()
  endforeach()
endfunction()
