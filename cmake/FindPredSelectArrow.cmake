# PredSelect::Arrow, from the system's Arrow C++ packages when it has them, otherwise from the
# pyarrow wheel in the private environment that scripts/setup makes (.venv).

find_package(Arrow CONFIG QUIET)
find_package(Parquet CONFIG QUIET)
if(Arrow_FOUND AND Parquet_FOUND)
  set(PredSelectArrow_ROOT ${Arrow_DIR})
  add_library(PredSelect::Arrow INTERFACE IMPORTED)
  target_link_libraries(PredSelect::Arrow INTERFACE Arrow::arrow_shared Parquet::parquet_shared)
else()
  find_program(PREDSELECT_PYTHON python3 PATHS ${PROJECT_SOURCE_DIR}/.venv/bin NO_DEFAULT_PATH)
  if(PREDSELECT_PYTHON)
    execute_process(
      COMMAND ${PREDSELECT_PYTHON} -c "import pyarrow, os; print(os.path.dirname(pyarrow.__file__))"
      OUTPUT_VARIABLE PredSelectArrow_ROOT OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
  if(PredSelectArrow_ROOT)
    file(GLOB arrow ${PredSelectArrow_ROOT}/libarrow.so.*)
    file(GLOB parquet ${PredSelectArrow_ROOT}/libparquet.so.*)
    # An installation takes them along; system packages are there already.
    set(PredSelectArrow_FILES ${arrow} ${parquet})
    file(GLOB PredSelectArrow_LICENSES ${PredSelectArrow_ROOT}-*.dist-info/licenses/*)
    add_library(PredSelect::Arrow INTERFACE IMPORTED)
    target_include_directories(PredSelect::Arrow SYSTEM INTERFACE ${PredSelectArrow_ROOT}/include)
    target_link_libraries(PredSelect::Arrow INTERFACE ${arrow} ${parquet})
  endif()
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(PredSelectArrow REQUIRED_VARS PredSelectArrow_ROOT
  REASON_FAILURE_MESSAGE "Arrow C++ was not found: run scripts/setup first")
