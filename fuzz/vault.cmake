# Vault path handling on arbitrary text.
if(TARGET mctask_vault)
  add_executable(vault_fuzz ${CMAKE_CURRENT_LIST_DIR}/vault_fuzz.cpp)
  target_compile_options(vault_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(vault_fuzz PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_libraries(vault_fuzz PRIVATE mctask_vault)
  mctask_warnings(vault_fuzz)
endif()
