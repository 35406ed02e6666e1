# The macro engine: compiling the conversion template, interpreting, and (with the document
# model) running the conversion template for one file.
if(TARGET mctask_cadsim_engine AND TARGET mctask_macro_testing)
  add_executable(cadsim_engine_bench ${CMAKE_CURRENT_LIST_DIR}/cadsim_engine_bench.cpp
    ${CMAKE_CURRENT_LIST_DIR}/benchmain.cpp)
  target_compile_definitions(cadsim_engine_bench PRIVATE
    MCTASK_TEMPLATES_DIR="${PROJECT_SOURCE_DIR}/macro/templates"
    MCTASK_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/samples")
  if(TARGET mctask_cadsim_model)
    target_link_libraries(cadsim_engine_bench PRIVATE mctask_cadsim_model)
    target_compile_definitions(cadsim_engine_bench PRIVATE MCTASK_BENCH_WITH_MODEL)
  endif()
  target_link_libraries(cadsim_engine_bench PRIVATE mctask_cadsim_engine mctask_macro_testing benchmark::benchmark Qt6::Gui)
  mctask_warnings(cadsim_engine_bench)
  mctask_pch(cadsim_engine_bench code)
endif()
