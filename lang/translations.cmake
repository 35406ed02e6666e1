# Qt Linguist files built into language folders. The add-in's texts are
# id-based (a text's id is "<section>.<key>"), so lrelease runs with -idbased;
# a text translated as its English is left out (-removeidentical), so the code's
# own English shows, exactly, where a language has nothing else to say.
find_package(Qt6 REQUIRED COMPONENTS LinguistTools)
# texts.py keeps the .ts files up to date and checks them (a test).
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# mctask_qm_files(TARGET name OUTPUT_DIR dir TS_FILES a.ts... [QT_CATALOGUES qtbase... LANGUAGE de])
# Builds every .ts into dir/<name>.qm, where <name> is the file's name without
# a trailing "_<CODE>" ("McTaskAddIn_DE.ts" gives "McTaskAddIn.qm"), and copies
# Qt's own catalogues of the language ("qtbase_de.qm") beside them.
function(mctask_qm_files)
  cmake_parse_arguments(ARG "" "TARGET;OUTPUT_DIR;LANGUAGE" "TS_FILES;QT_CATALOGUES" ${ARGN})
  set(outputs)
  foreach(ts ${ARG_TS_FILES})
    get_filename_component(ts ${ts} ABSOLUTE)
    get_filename_component(name ${ts} NAME_WE)
    string(REGEX REPLACE "_[A-Z][A-Z]$" "" name ${name})
    set(qm ${ARG_OUTPUT_DIR}/${name}.qm)
    add_custom_command(OUTPUT ${qm}
      COMMAND ${CMAKE_COMMAND} -E make_directory ${ARG_OUTPUT_DIR}
      COMMAND Qt6::lrelease -idbased -removeidentical -silent ${ts} -qm ${qm}
      DEPENDS ${ts} VERBATIM)
    list(APPEND outputs ${qm})
  endforeach()
  set(qt_translations ${QT6_INSTALL_PREFIX}/${QT6_INSTALL_TRANSLATIONS})
  foreach(catalogue ${ARG_QT_CATALOGUES})
    set(source ${qt_translations}/${catalogue}_${ARG_LANGUAGE}.qm)
    if(NOT EXISTS ${source})
      message(WARNING "${source} is missing: install qt6-translations-l10n")
      continue()
    endif()
    set(copy ${ARG_OUTPUT_DIR}/${catalogue}_${ARG_LANGUAGE}.qm)
    add_custom_command(OUTPUT ${copy}
      COMMAND ${CMAKE_COMMAND} -E copy_if_different ${source} ${copy}
      DEPENDS ${source} VERBATIM)
    list(APPEND outputs ${copy})
  endforeach()
  add_custom_target(${ARG_TARGET} ALL DEPENDS ${outputs})
endfunction()

# mctask_language(CODE TS file.ts [QT_LANGUAGE de]): the language folder
# Lang/<CODE> of the build tree's installation folder, installed as
# lib/../Lang/<CODE>. Other files of the folder (help) sit beside these.
function(mctask_language code)
  cmake_parse_arguments(ARG "" "TS;QT_LANGUAGE" "" ${ARGN})
  set(catalogues)
  if(ARG_QT_LANGUAGE)
    set(catalogues qtbase qt_help)
  endif()
  mctask_qm_files(TARGET lang_${code} OUTPUT_DIR ${PROJECT_BINARY_DIR}/Lang/${code}
    TS_FILES ${ARG_TS} QT_CATALOGUES ${catalogues} LANGUAGE ${ARG_QT_LANGUAGE})
  install(DIRECTORY ${PROJECT_BINARY_DIR}/Lang/${code} DESTINATION Lang)
endfunction()
