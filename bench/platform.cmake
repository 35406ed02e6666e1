# Platform layer: drive-map path resolution, registry store reads and writes, error texts.
if(TARGET mctask_platform AND TARGET mctask_common)
  add_executable(platform_bench ${CMAKE_CURRENT_LIST_DIR}/platform_bench.cpp)
  target_link_libraries(platform_bench PRIVATE mctask_platform mctask_common benchmark::benchmark_main)
  mctask_warnings(platform_bench)
  mctask_pch(platform_bench code)
endif()
