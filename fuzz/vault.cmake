# Vault path handling on arbitrary text. The path code is compiled into the
# target so that the fuzzer sees its coverage.
if(TARGET mctask_vault)
  add_executable(vault_fuzz ${CMAKE_CURRENT_LIST_DIR}/vault_fuzz.cpp ${PROJECT_SOURCE_DIR}/vault/vaultpaths.cpp)
  target_include_directories(vault_fuzz PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_options(vault_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(vault_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(vault_fuzz PRIVATE mctask_platform Qt6::Core)
  mctask_warnings(vault_fuzz)
endif()
