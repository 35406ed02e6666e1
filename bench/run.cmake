# File lists: XML write and read, output registration.
if(TARGET mctask_run)
  add_executable(run_bench ${CMAKE_CURRENT_LIST_DIR}/run_bench.cpp)
  target_link_libraries(run_bench PRIVATE mctask_run benchmark::benchmark_main)
  mctask_warnings(run_bench)
  mctask_pch(run_bench code)
endif()
