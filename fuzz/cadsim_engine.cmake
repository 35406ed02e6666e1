# The macro engine's lexer and parser on arbitrary text. The stages are compiled into the
# target so that the fuzzer sees their coverage.
if(TARGET mctask_cadsim_engine)
  set(engine_dir ${PROJECT_SOURCE_DIR}/cadsim/engine)
  add_executable(cadsim_engine_fuzz ${CMAKE_CURRENT_LIST_DIR}/cadsim_engine_fuzz.cpp
    ${engine_dir}/scripterror.cpp ${engine_dir}/value.cpp ${engine_dir}/scriptobject.cpp
    ${engine_dir}/lexer.cpp ${engine_dir}/parser.cpp ${engine_dir}/record.cpp)
  target_include_directories(cadsim_engine_fuzz PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(cadsim_engine_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(cadsim_engine_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(cadsim_engine_fuzz PRIVATE Qt6::Core)
  mctask_warnings(cadsim_engine_fuzz)
endif()
