# The embedded vault: walking a 100,000-file tree, and adding plus checking
# in 10,000 files in one transaction.
if(TARGET mctask_vault)
  add_executable(vault_bench ${CMAKE_CURRENT_LIST_DIR}/vault_bench.cpp)
  target_link_libraries(vault_bench PRIVATE mctask_vault benchmark::benchmark_main)
  mctask_warnings(vault_bench)
  mctask_pch(vault_bench code)
endif()

# The same on PostgreSQL against a plain-libpq floor (MCTASK_BENCH_PG: the server).
if(TARGET mctask_vault)
  add_executable(pgvault_bench ${CMAKE_CURRENT_LIST_DIR}/pgvault_bench.cpp)
  target_link_libraries(pgvault_bench PRIVATE mctask_vault benchmark::benchmark_main)
  mctask_warnings(pgvault_bench)
  mctask_pch(pgvault_bench code)
endif()
