# The task host's queue alone: claims and finishes per second, beside the
# vault database's own floor (an empty write transaction).
if(TARGET mctask_hostservice)
  add_executable(hostservice_bench ${CMAKE_CURRENT_LIST_DIR}/hostservice_bench.cpp)
  target_link_libraries(hostservice_bench PRIVATE mctask_hostservice benchmark::benchmark_main)
  mctask_warnings(hostservice_bench)
  mctask_pch(hostservice_bench code)
endif()
