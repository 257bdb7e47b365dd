# The reference documentation: Doxygen over the public headers, into
# build/.../docs/html (target docs, built with everything when Doxygen is
# installed). Its warnings land in docs/warnings.txt.
find_package(Doxygen)
find_package(Python3 COMPONENTS Interpreter)
if(NOT DOXYGEN_FOUND OR NOT Python3_Interpreter_FOUND)
  message(STATUS "Doxygen or Python missing: no reference documentation")
  return()
endif()
set(TARN_DOCS_DIR ${PROJECT_BINARY_DIR}/docs)
configure_file(${PROJECT_SOURCE_DIR}/docs/Doxyfile.in ${TARN_DOCS_DIR}/Doxyfile @ONLY)
file(GLOB _tarn_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/tarn/*.h)
add_custom_command(OUTPUT ${TARN_DOCS_DIR}/html/index.html
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${TARN_DOCS_DIR}/html
  COMMAND Doxygen::doxygen ${TARN_DOCS_DIR}/Doxyfile
  DEPENDS ${_tarn_headers} ${PROJECT_BINARY_DIR}/include/tarn/tarn_version.h
          ${TARN_DOCS_DIR}/Doxyfile ${PROJECT_SOURCE_DIR}/docs/doc_filter.py
          ${PROJECT_SOURCE_DIR}/docs/mainpage.dox
  COMMENT "Reference documentation (Doxygen)")
add_custom_target(docs ALL DEPENDS ${TARN_DOCS_DIR}/html/index.html)
