# Cross-compiles for 64-bit Windows 10 and later, into programs that need nothing but the system's own libraries.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(host x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${host}-gcc-posix)
set(CMAKE_CXX_COMPILER ${host}-g++-posix)
set(CMAKE_RC_COMPILER ${host}-windres)

execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/dependencies --where OUTPUT_VARIABLE dependencies
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(CMAKE_FIND_ROOT_PATH /usr/${host} ${dependencies})
set(CMAKE_PREFIX_PATH ${dependencies})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_FIND_PACKAGE_PREFER_CONFIG ON)  # of wxWidgets, CMake's own module would find only another system's
add_compile_definitions(wxDEBUG_LEVEL=0)  # as wxWidgets was built there, which its configuration does not tell
set(ZLIB_USE_STATIC_LIBS ON)  # libcurl needs it and looks for it again
