# The stand-in CAD process: from start to the answer of its first call.
if(TARGET mcsim AND TARGET mctask_cadsim_mcsimprocess)
  add_executable(cadsim_bench ${CMAKE_CURRENT_LIST_DIR}/cadsim_bench.cpp ${CMAKE_CURRENT_LIST_DIR}/benchmain.cpp)
  target_link_libraries(cadsim_bench PRIVATE mctask_cadsim_mcsimprocess benchmark::benchmark Qt6::Gui)
  target_compile_definitions(cadsim_bench PRIVATE MCSIM_PROGRAM="$<TARGET_FILE:mcsim>")
  add_dependencies(cadsim_bench mcsim)
  mctask_warnings(cadsim_bench)
  mctask_pch(cadsim_bench code)
endif()
