# The task host's queue alone: claims and finishes per second, beside the
# vault database's own floor (an empty write transaction); and eight claimers
# at once on SQLite and on PostgreSQL (MCTASK_BENCH_PG: the server).
if(TARGET mctask_hostservice)
  add_executable(hostservice_bench ${CMAKE_CURRENT_LIST_DIR}/hostservice_bench.cpp)
  target_link_libraries(hostservice_bench PRIVATE mctask_hostservice vault_bench_common benchmark::benchmark_main)
  mctask_warnings(hostservice_bench)
  mctask_pch(hostservice_bench code)
endif()
