# Macro generation: preparing a template for a run, building one file's macro.
if(TARGET mctask_macro)
  add_executable(macro_bench ${CMAKE_CURRENT_LIST_DIR}/macro_bench.cpp)
  target_link_libraries(macro_bench PRIVATE mctask_macro_testing benchmark::benchmark_main)
  mctask_warnings(macro_bench)
  mctask_pch(macro_bench code)
endif()
