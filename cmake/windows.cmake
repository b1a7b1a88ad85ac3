# What makes a program one of Windows: its icon, version and manifest, and the check that it needs nothing besides the
# system.
enable_language(RC)

function(make_windows_program target description)
  set(QUORVEL_FILE_DESCRIPTION "${description}")
  get_target_property(windowed ${target} WIN32_EXECUTABLE)
  set(folder ${CMAKE_BINARY_DIR}/generated/windows)
  configure_file(${CMAKE_SOURCE_DIR}/src/windows/quorvel.rc.in ${folder}/${target}.rc @ONLY)
  configure_file(${CMAKE_SOURCE_DIR}/src/windows/quorvel.manifest.in ${folder}/${target}.manifest @ONLY)
  target_sources(${target} PRIVATE ${folder}/${target}.rc)
  set_source_files_properties(${folder}/${target}.rc PROPERTIES
    OBJECT_DEPENDS "${folder}/${target}.manifest;${CMAKE_SOURCE_DIR}/src/windows/quorvel.ico")
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:${target}> -DOBJDUMP=${CMAKE_OBJDUMP}
            -P ${CMAKE_SOURCE_DIR}/cmake/check_imports.cmake)
endfunction()
