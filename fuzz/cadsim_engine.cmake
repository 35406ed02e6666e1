# The macro engine's compile step (lexer, parser, checker) on arbitrary text. The engine's
# sources are compiled into the target so that the fuzzer sees their coverage. Run it with the
# dictionary of the language's words and the golden macros as the first corpus:
#   cadsim_engine_fuzz -dict=fuzz/cadsim_engine.dict corpus/ cadsim/engine/golden/*/
if(TARGET mctask_cadsim_engine)
  set(engine_dir ${PROJECT_SOURCE_DIR}/cadsim/engine)
  file(GLOB engine_sources ${engine_dir}/*.cpp)
  list(FILTER engine_sources EXCLUDE REGEX "_test\\.cpp$")
  add_executable(cadsim_engine_fuzz ${CMAKE_CURRENT_LIST_DIR}/cadsim_engine_fuzz.cpp ${engine_sources})
  target_include_directories(cadsim_engine_fuzz PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(cadsim_engine_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(cadsim_engine_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(cadsim_engine_fuzz PRIVATE mctask_base Qt6::Core)
  mctask_warnings(cadsim_engine_fuzz)
endif()
