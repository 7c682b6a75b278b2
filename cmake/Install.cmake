# Where everything lies once installed.
install(TARGETS vantle RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY src/resources/Vantle_Vantle.bundle src/resources/icons src/resources/sounds
        DESTINATION ${CMAKE_INSTALL_DATADIR}/vantle)
install(FILES src/resources/app.vantleapp.Vantle.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES src/resources/icons/app.vantleapp.Vantle.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
configure_file(src/resources/dbus/app.vantleapp.Vantle.service.in
               ${CMAKE_BINARY_DIR}/app.vantleapp.Vantle.service @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/app.vantleapp.Vantle.service
        DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
