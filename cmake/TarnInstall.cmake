# The SDK: tarn.dll, its import library, the public headers, a CMake package
# (with the cross toolchain), a pkg-config file, the reference documentation
# and the licence, so that a consumer writes find_package(tarn) and links
# tarn::tarn. `cmake --install --strip` strips tarn.dll with the toolchain's
# strip.
include(CMakePackageConfigHelpers)

install(TARGETS tarn EXPORT tarnTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/tarn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_BINARY_DIR}/include/tarn/tarn_export.h
              ${PROJECT_BINARY_DIR}/include/tarn/tarn_version.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarn)

set(_tarn_cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tarn)
install(EXPORT tarnTargets NAMESPACE tarn:: DESTINATION ${_tarn_cmake_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/tarnConfig.cmake.in
  ${PROJECT_BINARY_DIR}/tarnConfig.cmake
  INSTALL_DESTINATION ${_tarn_cmake_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tarnConfig.cmake ${PROJECT_BINARY_DIR}/tarnConfigVersion.cmake
              ${PROJECT_SOURCE_DIR}/cmake/mingw-w64-x86_64.cmake
  DESTINATION ${_tarn_cmake_dir})

configure_file(${PROJECT_SOURCE_DIR}/cmake/tarn.pc.in ${PROJECT_BINARY_DIR}/tarn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tarn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION .)
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
# The reference (the docs target, built with everything when Doxygen is
# there).
if(TARGET docs)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/docs/html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
endif()

# cpack (run in the build tree) packs what scripts/build-sdk installed into
# TARN_SDK_DIR, tarn.exe included, as one archive: tarn-VERSION-win64.zip.
set(TARN_SDK_DIR ${PROJECT_SOURCE_DIR}/dist CACHE PATH "the installed SDK that cpack packs")
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME tarn-${PROJECT_VERSION}-win64)
set(CPACK_INSTALL_CMAKE_PROJECTS "")
set(CPACK_INSTALLED_DIRECTORIES ${TARN_SDK_DIR} .)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
include(CPack)
