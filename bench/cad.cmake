# The CAD connection against the stand-in: a restart and a trivial macro,
# beside a bare automation call round trip.
if(TARGET mcsim AND TARGET mctask_cad AND TARGET mctask_cadsim_install)
  add_executable(cad_bench ${CMAKE_CURRENT_LIST_DIR}/cad_bench.cpp ${CMAKE_CURRENT_LIST_DIR}/benchmain.cpp)
  target_link_libraries(cad_bench PRIVATE mctask_cad mctask_cadsim_install benchmark::benchmark Qt6::Gui)
  target_compile_definitions(cad_bench PRIVATE MCSIM_PROGRAM="$<TARGET_FILE:mcsim>")
  add_dependencies(cad_bench mcsim)
  mctask_warnings(cad_bench)
  mctask_pch(cad_bench code)
endif()
