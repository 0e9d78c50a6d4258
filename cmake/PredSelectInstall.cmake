# What `cmake --install` lays down: the program and its libraries (component runtime), and public headers
# by layer with the package for find_package(PredSelect) (component development). An installation
# can be moved: everything finds the rest by its own place.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/PredSelect)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
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

set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME runtime)
# The document types of result documents and saved state.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/modelfiles/dtd
  DESTINATION ${CMAKE_INSTALL_DATADIR}/predselect FILES_MATCHING PATTERN "*.dtd")
# Arrow C++ where no package of the system has it.
set(private_dir ${CMAKE_INSTALL_LIBDIR}/predselect)
install(FILES ${PredSelectArrow_FILES} DESTINATION ${private_dir})
install(FILES ${PredSelectArrow_LICENSES} DESTINATION ${CMAKE_INSTALL_DOCDIR}/libraries/arrow)
# What is carried and loaded: by name and licence, and with versions.
execute_process(COMMAND ${PREDSELECT_REPORT_PYTHON} ${PROJECT_SOURCE_DIR}/scripts/make-bom
  ${PROJECT_BINARY_DIR}/bom.cdx.json ${PROJECT_VERSION} COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/scripts/make-bom
  ${PROJECT_SOURCE_DIR}/THIRD-PARTY.md)
set(PredSelect_BILL ${PROJECT_SOURCE_DIR}/THIRD-PARTY.md ${PROJECT_SOURCE_DIR}/SECURITY.md
  ${PROJECT_BINARY_DIR}/bom.cdx.json)
install(FILES ${PredSelect_BILL} DESTINATION ${CMAKE_INSTALL_DOCDIR})
# Every other library that the program loads, but those that belong to the kernel's loader: for an
# archive that asks nothing of the machine. Only on demand (component bundle).
set(PREDSELECT_PRIVATE_DIR ${private_dir})
configure_file(${PROJECT_SOURCE_DIR}/cmake/BundleLibraries.cmake.in
  ${PROJECT_BINARY_DIR}/BundleLibraries.cmake.in @ONLY)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/BundleLibraries-$<CONFIG>.cmake
  INPUT ${PROJECT_BINARY_DIR}/BundleLibraries.cmake.in)
install(SCRIPT ${PROJECT_BINARY_DIR}/BundleLibraries-$<CONFIG>.cmake COMPONENT bundle EXCLUDE_FROM_ALL)
