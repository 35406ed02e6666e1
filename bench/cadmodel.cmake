# The stand-in's document model: opening and exporting a sample drawing, exports of
# a part's solid by the geometry kernel, and the
# conversion template run on it through the macro engine.
if(TARGET mctask_cadsim_model AND TARGET mctask_macro_testing)
  add_executable(cadmodel_bench ${CMAKE_CURRENT_LIST_DIR}/cadmodel_bench.cpp ${CMAKE_CURRENT_LIST_DIR}/benchmain.cpp)
  target_link_libraries(cadmodel_bench PRIVATE mctask_cadsim_model mctask_macro_testing benchmark::benchmark Qt6::Gui)
  target_compile_definitions(cadmodel_bench PRIVATE
    MCTASK_SAMPLES_DIR="${PROJECT_SOURCE_DIR}/samples"
    MCTASK_TEMPLATES_DIR="${PROJECT_SOURCE_DIR}/macro/templates")
  mctask_warnings(cadmodel_bench)
  mctask_pch(cadmodel_bench code)
endif()
