# What the Python package carries (component python): the libraries of the C interface, side by side in
# its folder. A wheel has no links, so that they go by their plain names there (SKBUILD is on where
# the package is built).
set(wheel_libraries predselectengines predselecthost predselect predselectoperations predselectfiles
  predselectcfiles)
if(SKBUILD)
  foreach(library IN LISTS wheel_libraries)
    set_property(TARGET ${library} PROPERTY VERSION)
    set_property(TARGET ${library} PROPERTY SOVERSION)
    set_property(TARGET ${library} PROPERTY INSTALL_RPATH "$ORIGIN")
  endforeach()
  install(TARGETS ${wheel_libraries} LIBRARY DESTINATION predselect/_lib COMPONENT python)
  install(FILES ${PredSelectArrow_FILES} DESTINATION predselect/_lib COMPONENT python)
  install(FILES ${PredSelectArrow_LICENSES} DESTINATION ${SKBUILD_METADATA_DIR}/licenses/arrow COMPONENT python)
  install(FILES ${PredSelect_BILL} DESTINATION ${SKBUILD_METADATA_DIR}/licenses COMPONENT python)
  # Of what draws the charts of a report, which is in the host's library.
  install(FILES ${PROJECT_SOURCE_DIR}/host/output/report/page/charts.licences.txt
    DESTINATION ${SKBUILD_METADATA_DIR}/licenses/charts COMPONENT python)
endif()
