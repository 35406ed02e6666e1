# Option expansion and macro literals on arbitrary text. The code under test
# is compiled into the target so that the fuzzer sees its coverage.
if(TARGET mctask_macro)
  set(macro_dir ${PROJECT_SOURCE_DIR}/macro)
  add_executable(macro_fuzz ${CMAKE_CURRENT_LIST_DIR}/macro_fuzz.cpp
    ${macro_dir}/expanddelimited.cpp ${macro_dir}/macroliteral.cpp ${macro_dir}/varianttext.cpp)
  target_include_directories(macro_fuzz PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(macro_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(macro_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(macro_fuzz PRIVATE mctask_macro)
  mctask_warnings(macro_fuzz)
endif()
