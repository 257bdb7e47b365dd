# One check of the SDK installed into BUILD_DIR/sdk-stage (by sdk_consumer);
# CASE names it. Programs run under Wine in the build tree's own prefix.
set(stage ${BUILD_DIR}/sdk-stage)
set(toolchain ${stage}/lib/cmake/tarn/mingw-w64-x86_64.cmake)
set(work ${BUILD_DIR}/sdk-${CASE})
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nfailed (${rc}):\n${out}\n${err}")
  endif()
  set(out "${out}" PARENT_SCOPE)
endfunction()

# Runs a Windows program and checks that its output holds each EXPECT.
function(run_windows program)
  cmake_parse_arguments(R "" "" "EXPECT" ${ARGN})
  run(${CMAKE_COMMAND} -E env TARN_WINE_ROOT=${BUILD_DIR}/wine ${SOURCE_DIR}/scripts/wine-run ${program})
  message("${out}")
  foreach(expected IN LISTS R_EXPECT)
    string(FIND "${out}" "${expected}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "${program} printed no \"${expected}\"")
    endif()
  endforeach()
endfunction()

# Configures and builds a project against the SDK; extra arguments go to the
# configure step.
function(build_project source binary)
  run(${CMAKE_COMMAND} -S ${source} -B ${binary} -G ${GENERATOR} -DCMAKE_BUILD_TYPE=Release ${ARGN})
  run(${CMAKE_COMMAND} --build ${binary})
endfunction()

set(tour_expect "30 30' 0.00\"" "no-such-file.txt  code 2: " "tarn.dll  1.0.0 (headers 1.0.0)")

if(CASE STREQUAL "recipe")
  # README's files, exactly as README shows them, in a directory of their own
  # outside the source tree, built with README's commands.
  file(READ ${SOURCE_DIR}/README.md readme)
  string(SHA1 key "${BUILD_DIR}")
  string(SUBSTRING ${key} 0 12 key)
  set(project_dir /tmp/tarn-recipe-${key})
  file(REMOVE_RECURSE ${project_dir})
  foreach(name CMakeLists.txt app.cpp)
    if(NOT readme MATCHES "<!-- recipe ${name} -->\n```[a-z]*\n(.*)```\n<!-- end of recipe ${name} -->")
      message(FATAL_ERROR "README.md holds no recipe ${name} between its markers")
    endif()
    file(WRITE ${project_dir}/${name} "${CMAKE_MATCH_1}")
  endforeach()
  build_project(${project_dir} ${project_dir}/build -DCMAKE_TOOLCHAIN_FILE=${toolchain})
  run_windows(${project_dir}/build/app.exe EXPECT "cbf43926")
  file(REMOVE_RECURSE ${project_dir})
elseif(CASE STREQUAL "example")
  build_project(${SOURCE_DIR}/examples/tour ${work} -DCMAKE_TOOLCHAIN_FILE=${toolchain})
  run_windows(${work}/tour.exe EXPECT ${tour_expect})
elseif(CASE STREQUAL "plain")
  # g++ with the flags of tarn.pc, the MinGW runtime linked statically.
  run(${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${stage}/lib/pkgconfig PKG_CONFIG_LIBDIR=
      pkg-config --cflags --libs tarn)
  separate_arguments(flags UNIX_COMMAND "${out}")
  run(${CXX} ${SOURCE_DIR}/examples/tour/tour.cpp ${flags} -static -o ${work}/tour.exe)
  file(COPY ${stage}/bin/tarn.dll DESTINATION ${work})
  run_windows(${work}/tour.exe EXPECT ${tour_expect})
elseif(CASE STREQUAL "package")
  # What the SDK holds; tarn.dll without its symbol table.
  foreach(path bin/tarn.dll lib/libtarn.dll.a include/tarn/tarn_version.h
          lib/cmake/tarn/tarnConfigVersion.cmake lib/pkgconfig/tarn.pc
          share/doc/tarn/html/index.html LICENSE)
    if(NOT EXISTS ${stage}/${path})
      message(FATAL_ERROR "the SDK lacks ${path}")
    endif()
  endforeach()
  run(${OBJDUMP} -t ${stage}/bin/tarn.dll)
  if(NOT out MATCHES "no symbols")
    message(FATAL_ERROR "tarn.dll is not stripped")
  endif()
  # find_package(tarn) from a toolchain that searches packages only below
  # its root paths: tarn_DIR, or the SDK among the root paths.
  file(WRITE ${work}/only.cmake "include(${SOURCE_DIR}/cmake/mingw-w64-x86_64.cmake)\n"
    "set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)\nlist(APPEND CMAKE_FIND_ROOT_PATH \${EXTRA_ROOT})\n")
  file(WRITE ${work}/src/CMakeLists.txt "cmake_minimum_required(VERSION 3.25)\n"
    "project(p LANGUAGES CXX)\nfind_package(tarn 1.0 REQUIRED)\n")
  run(${CMAKE_COMMAND} -S ${work}/src -B ${work}/dir -G ${GENERATOR}
      -DCMAKE_TOOLCHAIN_FILE=${work}/only.cmake -Dtarn_DIR=${stage}/lib/cmake/tarn)
  run(${CMAKE_COMMAND} -S ${work}/src -B ${work}/root -G ${GENERATOR}
      -DCMAKE_TOOLCHAIN_FILE=${work}/only.cmake -DEXTRA_ROOT=${stage} -DCMAKE_PREFIX_PATH=${stage})
  # A project for the build host is told why it cannot have the package.
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${work}/src -B ${work}/host -G ${GENERATOR}
                    -DCMAKE_CXX_COMPILER=g++ -DCMAKE_PREFIX_PATH=${stage}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REGEX REPLACE "[ \n]+" " " err "${err}")
  if(rc EQUAL 0 OR NOT err MATCHES "tarn.dll is a library for x86-64 Windows, and this project builds for Linux")
    message(FATAL_ERROR "find_package(tarn) on a Linux target:\n${err}")
  endif()
  # cpack packs the installed SDK into one archive.
  execute_process(COMMAND cpack --config ${BUILD_DIR}/CPackConfig.cmake -B ${work}/package
                    -D "CPACK_INSTALLED_DIRECTORIES=${stage};." COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB archive ${work}/package/tarn-*-win64.zip)
  run(${CMAKE_COMMAND} -E tar tf ${archive})
  if(NOT out MATCHES "bin/tarn.dll" OR NOT out MATCHES "lib/cmake/tarn/tarnConfig.cmake")
    message(FATAL_ERROR "the archive lacks the SDK:\n${out}")
  endif()
elseif(CASE STREQUAL "docs")
  # Doxygen over the headers: any warning, an undocumented name first of all,
  # fails.
  file(WRITE ${work}/Doxyfile "@INCLUDE = ${BUILD_DIR}/docs/Doxyfile\n"
    "OUTPUT_DIRECTORY = ${work}\nWARN_LOGFILE = ${work}/warnings.txt\n")
  run(${DOXYGEN} ${work}/Doxyfile)
  file(READ ${work}/warnings.txt warnings)
  if(NOT warnings STREQUAL "")
    message(FATAL_ERROR "Doxygen's warnings on the public headers:\n${warnings}")
  endif()
endif()
