# Installed files that are not built, and the Debian package made from the install tree
# (`./dev.sh package`). Programs and their own data install from their folders' CMakeLists.
include(GNUInstallDirs)

find_program(GZIP_EXECUTABLE gzip REQUIRED)

# Debian wants manual pages and its changelog compressed, with no time stamp inside.
function(kivo_install_gzipped source destination)
  get_filename_component(name ${source} NAME)
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/packaging/${name}.gz)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/packaging
    COMMAND ${GZIP_EXECUTABLE} -9nc ${source} > ${compressed}
    DEPENDS ${source} VERBATIM)
  string(MAKE_C_IDENTIFIER ${name} target)
  add_custom_target(kivo_gzip_${target} ALL DEPENDS ${compressed})
  install(FILES ${compressed} DESTINATION ${destination})
endfunction()

install(FILES ${PROJECT_SOURCE_DIR}/data/app.kivo.Kivo.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/data/metainfo/app.kivo.Kivo.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
kivo_install_gzipped(${PROJECT_SOURCE_DIR}/data/man/kivo.1 ${CMAKE_INSTALL_MANDIR}/man1)
# Debian looks for these under the package's name, which is lower case.
install(FILES ${PROJECT_SOURCE_DIR}/data/debian/copyright
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kivo)
kivo_install_gzipped(${PROJECT_SOURCE_DIR}/data/debian/changelog ${CMAKE_INSTALL_DATADIR}/doc/kivo)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kivo)
set(CPACK_PACKAGE_VENDOR "The Kivo developers")
set(CPACK_PACKAGE_CONTACT "The Kivo developers <hello@kivo.app>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "personal, automatic desktop time tracker")
set(CPACK_PACKAGE_DESCRIPTION
  "Kivo runs in the background and notes, once a second, which application\n\
is in front, the title of its window and, for web browsers with the Kivo\n\
extension, the page being read. The user's own rules sort that time into\n\
projects and tags; the window shows the time by application, website, tag\n\
and project, a daily productivity score and per-day bars, and a tray item\n\
shows today's score. Everything stays in a local SQLite file; nothing is\n\
sent anywhere.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://kivo.app/)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt loads these at run time, so no library dependency names them: the SVG icon loader and the
# platform plugins.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-wayland")
# The owner and mode of every file as Debian expects, whatever the build tree had.
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
