# A conversion run of many files through the run driver and the embedded
# vault, with a CAD application that only writes each export.
if(TARGET mctask_run AND TARGET mctask_vault)
  add_executable(rundriver_bench ${CMAKE_CURRENT_LIST_DIR}/rundriver_bench.cpp)
  target_link_libraries(rundriver_bench PRIVATE mctask_run mctask_vault mctask_host_testing benchmark::benchmark_main)
  mctask_warnings(rundriver_bench)
  mctask_pch(rundriver_bench code)
endif()
