# What the desktop reads of an installed program: its entry, its icon and how the bus starts it.
set(id app.vantleapp.Vantle)
configure_file(src/resources/dbus/${id}.service.in ${id}.service @ONLY)
install(FILES src/resources/${id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_BINARY_DIR}/${id}.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES src/resources/icons/${id}.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
unset(id)
