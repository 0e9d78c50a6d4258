# `cpack -G DEB`: a package for Debian, which names what it needs from there. `cpack -G TGZ`: an archive
# to unpack anywhere, with everything inside but the C library.

set(CPACK_PACKAGE_NAME predselect)
set(CPACK_PACKAGE_CONTACT "PredSelect maintainers <maintainers@predselect.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "screens, ranks and selects predictors of a table of data")
set(CPACK_PACKAGE_DESCRIPTION "Which columns of a table carry information about a target, and which
few of them make a good classifier: the program, its libraries and their headers.")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION math)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib ${PredSelectArrow_ROOT})

# Which components a kind of package has.
file(WRITE ${PROJECT_BINARY_DIR}/PackageComponents.cmake [=[
set(components runtime development)
if(CPACK_GENERATOR STREQUAL "TGZ")
  list(APPEND components bundle)
endif()
set(CPACK_INSTALL_CMAKE_PROJECTS)
foreach(component IN LISTS components)
  list(APPEND CPACK_INSTALL_CMAKE_PROJECTS ${CPACK_BUILD_SOURCE_DIRS_BINARY} PredSelect ${component} /)
endforeach()
]=])
set(CPACK_BUILD_SOURCE_DIRS_BINARY ${PROJECT_BINARY_DIR})
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/PackageComponents.cmake)
include(CPack)
