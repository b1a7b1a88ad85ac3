# Two packages for Debian: quorvel-cli for systems without a desktop, and quorvel, which brings the window.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_CONTACT ${QUORVEL_MAINTAINER})
set(CPACK_PACKAGE_HOMEPAGE_URL ${QUORVEL_WEBSITE})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_STRIP_FILES ON)
# Packages of the same sources are the same bytes, whenever and wherever they are made.
configure_file(package_time.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/package_time.cmake @ONLY)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_BINARY_DIR}/package_time.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/repack.cmake)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(what_it_does "Takes television episode files, or whole folders, and gives each file its right
name and place: it reads show, season and episode from the names of files and
folders, asks a listings service for the official name and the title, and
renames, moves or copies as the user's rules say.
.")

set(CPACK_COMPONENTS_ALL cli)
set(CPACK_DEBIAN_CLI_PACKAGE_NAME quorvel-cli)
set(CPACK_DEBIAN_CLI_PACKAGE_DEPENDS ca-certificates)
set(CPACK_COMPONENT_CLI_DESCRIPTION "give television episode files their right names (terminal)
${what_it_does}
Nothing is ever overwritten. This package needs no desktop.")

if(QUORVEL_DESKTOP)
  list(APPEND CPACK_COMPONENTS_ALL desktop)
  set(CPACK_COMPONENT_DESKTOP_DEPENDS cli)
  set(CPACK_DEBIAN_DESKTOP_PACKAGE_NAME quorvel)
  set(CPACK_COMPONENT_DESKTOP_DESCRIPTION "give television episode files their right names
${what_it_does}
Files are dropped on its window, and every operation can be undone. quorvel-cli
does the same work in a terminal.")
endif()
include(CPack)
