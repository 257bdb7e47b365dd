# Installs the SDK from BUILD_DIR into a staging folder and builds the tarn
# tool (tools/tarn) against it with find_package(tarn), then runs it.
set(stage ${BUILD_DIR}/sdk-stage)
set(consumer ${BUILD_DIR}/sdk-consumer)
file(REMOVE_RECURSE ${stage})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${stage} --strip
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR}/tools/tarn -B ${consumer} -G ${GENERATOR}
                  -DCMAKE_TOOLCHAIN_FILE=${SOURCE_DIR}/cmake/mingw-w64-x86_64.cmake
                  -DCMAKE_PREFIX_PATH=${stage} -DCMAKE_BUILD_TYPE=Release
                COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} --build ${consumer} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E env TARN_WINE_ROOT=${BUILD_DIR}/wine
                  ${SOURCE_DIR}/scripts/wine-run ${consumer}/tarn.exe version
                OUTPUT_VARIABLE out COMMAND_ERROR_IS_FATAL ANY)
message("${out}")
if(NOT out MATCHES "FileVersion")
  message(FATAL_ERROR "tarn.exe printed no version resource")
endif()
