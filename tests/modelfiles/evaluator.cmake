# Models of ours in an independent evaluator (scripts/requirements-models.txt); skipped without it.
add_executable(write_models ${CMAKE_CURRENT_SOURCE_DIR}/modelfiles/samples/write_models.cpp)
target_link_libraries(write_models PRIVATE predselect_flags predselectengines)
target_include_directories(write_models PRIVATE ${PROJECT_SOURCE_DIR})
set(models ${PROJECT_BINARY_DIR}/models)
file(MAKE_DIRECTORY ${models})
add_test(NAME Models.SamplesAreWritten COMMAND write_models ${models})
set_tests_properties(Models.SamplesAreWritten PROPERTIES FIXTURES_SETUP model_samples)
set(models_python ${PROJECT_SOURCE_DIR}/.venv-models/bin/python3)
if(NOT EXISTS ${models_python})
  set(models_python ${Python3_EXECUTABLE})
endif()
foreach(sample dense sparse)
  add_test(NAME Models.AnotherEvaluatorAgreesOn_${sample}
    COMMAND ${models_python} ${CMAKE_CURRENT_SOURCE_DIR}/modelfiles/check_pmml.py
      ${models}/${sample}.xml ${models}/${sample}-data.csv ${models}/${sample}-predictions.csv)
  set_tests_properties(Models.AnotherEvaluatorAgreesOn_${sample} PROPERTIES
    FIXTURES_REQUIRED model_samples SKIP_RETURN_CODE 77 TIMEOUT 300)
endforeach()
