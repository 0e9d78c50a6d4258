# predselect_report(<layer>): puts the page of reports and the charts' renderer into a layer.
#
# The renderer (Vega, Vega-Lite, Vega-Embed) comes with the Python package vl-convert-python, which
# scripts/setup puts into the private environment. A build without it is whole but for the charts of
# commands, of which its reports show the numbers.
find_program(PREDSELECT_PYTHON python3 PATHS ${PROJECT_SOURCE_DIR}/.venv/bin NO_DEFAULT_PATH)
if(PREDSELECT_PYTHON)
  set(PREDSELECT_REPORT_PYTHON ${PREDSELECT_PYTHON})
else()
  find_package(Python3 REQUIRED COMPONENTS Interpreter)
  set(PREDSELECT_REPORT_PYTHON ${Python3_EXECUTABLE})
endif()
execute_process(COMMAND ${PREDSELECT_REPORT_PYTHON} -c "import vl_convert"
  RESULT_VARIABLE no_renderer OUTPUT_QUIET ERROR_QUIET)
if(no_renderer)
  message(WARNING "The Python package vl-convert-python is not there (scripts/setup installs it): "
    "reports will show the numbers of a command's charts without drawing them")
endif()

function(predselect_report layer)
  set(folder ${PROJECT_SOURCE_DIR}/host/output/report/page)
  set(PREDSELECT_REPORT_DIR ${PROJECT_BINARY_DIR}/generated/report)
  set(maker ${PROJECT_SOURCE_DIR}/cmake/make_report.py)
  file(GLOB parts CONFIGURE_DEPENDS ${folder}/*)
  set(PREDSELECT_CHART_DRAWER ${PROJECT_SOURCE_DIR}/host/output/report/draw_charts.py)
  set(made ${PREDSELECT_REPORT_DIR}/page.html ${PREDSELECT_REPORT_DIR}/charts.js)
  add_custom_command(OUTPUT ${made}
    COMMAND ${PREDSELECT_REPORT_PYTHON} ${maker} ${folder} ${PREDSELECT_REPORT_DIR}
    DEPENDS ${maker} ${parts} VERBATIM)
  set(source ${PROJECT_BINARY_DIR}/generated/ReportFiles.cpp)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/ReportFiles.cpp.in ${source} @ONLY)
  set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS
    "${made};${PREDSELECT_CHART_DRAWER}")
  target_sources(layer_${layer} PRIVATE ${source} ${made})
endfunction()
