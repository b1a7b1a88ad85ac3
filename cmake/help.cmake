# The help in docs/help: pages for every browser, and for Windows the one file that its own viewer shows.
include(GNUInstallDirs)
find_program(CMARK_GFM cmark-gfm REQUIRED)
set(help_source ${CMAKE_SOURCE_DIR}/docs/help)
file(GLOB help_inputs CONFIGURE_DEPENDS ${help_source}/* ${help_source}/pictures/*)
set(help_maker ${CMAKE_SOURCE_DIR}/cmake/help_pages.cmake)
set(make_help_pages ${CMAKE_COMMAND} -DCMARK=${CMARK_GFM} -DSOURCE=${help_source})

if(WIN32)
  find_program(CHMCMD chmcmd REQUIRED)
  set(help_pages ${CMAKE_BINARY_DIR}/help)
  set(help_product ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/quorvel\ help.chm)
  add_custom_command(OUTPUT ${help_product} VERBATIM
    COMMAND ${make_help_pages} -DOUTPUT=${help_pages} -DPROJECT=help.hhp -P ${help_maker}
    COMMAND ${CMAKE_SOURCE_DIR}/tools/windows/compile-help ${CHMCMD} ${help_pages}/help.hhp ${help_product}
    DEPENDS ${help_inputs} ${help_maker} ${CMAKE_SOURCE_DIR}/tools/windows/compile-help)
else()
  set(help_pages ${CMAKE_BINARY_DIR}/share/doc/quorvel/help)
  set(help_product ${help_pages}/index.html)
  add_custom_command(OUTPUT ${help_product} VERBATIM
    COMMAND ${make_help_pages} -DOUTPUT=${help_pages} -P ${help_maker}
    DEPENDS ${help_inputs} ${help_maker})
  # Where the program looks for them, whatever is set as the folder for documents.
  install(DIRECTORY ${help_pages} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/quorvel COMPONENT desktop)
endif()
add_custom_target(quorvel-help ALL DEPENDS ${help_product})
