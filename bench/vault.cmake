# The embedded vault: walking a 100,000-file tree, and adding plus checking
# in 10,000 files in one transaction; the same on PostgreSQL against a
# plain-libpq floor (MCTASK_BENCH_PG: the server). Both share the batch they time.
if(TARGET mctask_vault)
  add_library(vault_bench_common STATIC ${CMAKE_CURRENT_LIST_DIR}/benchvaults.cpp)
  target_link_libraries(vault_bench_common PUBLIC mctask_vault benchmark::benchmark)
  target_include_directories(vault_bench_common PUBLIC ${CMAKE_CURRENT_LIST_DIR})
  mctask_warnings(vault_bench_common)
  mctask_pch(vault_bench_common code)

  foreach(name vault_bench pgvault_bench)
    add_executable(${name} ${CMAKE_CURRENT_LIST_DIR}/${name}.cpp)
    target_link_libraries(${name} PRIVATE vault_bench_common benchmark::benchmark_main)
    mctask_warnings(${name})
    mctask_pch(${name} code)
  endforeach()
endif()
