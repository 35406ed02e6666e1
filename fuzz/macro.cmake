# Option expansion and macro literals on arbitrary text.
if(TARGET mctask_macro)
  add_executable(macro_fuzz ${CMAKE_CURRENT_LIST_DIR}/macro_fuzz.cpp)
  target_compile_options(macro_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(macro_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(macro_fuzz PRIVATE mctask_macro)
  mctask_warnings(macro_fuzz)
endif()
