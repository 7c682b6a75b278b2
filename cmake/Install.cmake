install(TARGETS vantle RUNTIME)
# The program alone starts and loads them.
install(TARGETS vantle-decoder vantle-confined RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/vantle)
install(TARGETS vantle-gio LIBRARY DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/vantle)
if(TARGET vantle-player)
    install(TARGETS vantle-player RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/vantle)
endif()
install(DIRECTORY src/resources/Vantle_Vantle.bundle src/resources/icons src/resources/sounds
        DESTINATION ${CMAKE_INSTALL_DATADIR}/vantle)

# What the desktop reads of an installed program: its entry, its icon, how the bus starts it, and
# "Add to Vantle" in the menus of file managers, each of which has a place and a form of its own.
# These call gapplication, over which the bus starts the program where it does not run.
set(id app.vantleapp.Vantle)
configure_file(src/resources/dbus/${id}.service.in ${id}.service @ONLY)
install(FILES src/resources/${id}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_BINARY_DIR}/${id}.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES src/resources/icons/${id}.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
set(managers src/resources/filemanagers)
install(FILES ${managers}/thunar.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/Thunar/sendto RENAME ${id}.desktop)
install(FILES ${managers}/nautilus.py
        DESTINATION ${CMAKE_INSTALL_DATADIR}/nautilus-python/extensions RENAME vantle.py)
install(FILES ${managers}/vantle.nemo_action DESTINATION ${CMAKE_INSTALL_DATADIR}/nemo/actions)
# PCManFM-Qt reads this one; Caja does with its extension for actions.
install(FILES ${managers}/actions.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/file-manager/actions RENAME ${id}.desktop)
install(FILES ${managers}/dolphin.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/kio/servicemenus RENAME ${id}.desktop
        PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
unset(managers)
unset(id)
