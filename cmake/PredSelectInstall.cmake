# What `cmake --install` lays down: libraries, public headers by layer, and the package for
# find_package(PredSelect).

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/PredSelect)
foreach(layer common feature naivebayes modelfiles host backend operations)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${layer}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/predselect
    FILES_MATCHING PATTERN "*.h"
    PATTERN "strings" EXCLUDE PATTERN "operations/c" EXCLUDE)
endforeach()
# The C interface stands where a compiler looks first; what is behind it is not installed.
install(FILES ${PROJECT_SOURCE_DIR}/operations/c/predselect.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT PredSelectTargets NAMESPACE PredSelect:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/PredSelectConfig.cmake.in
  ${PROJECT_BINARY_DIR}/PredSelectConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/PredSelectConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/PredSelectConfig.cmake
  ${PROJECT_BINARY_DIR}/PredSelectConfigVersion.cmake DESTINATION ${package_dir})
# The document types of result documents and saved state.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/modelfiles/dtd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/predselect FILES_MATCHING PATTERN "*.dtd")
