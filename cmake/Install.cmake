install(TARGETS brennikclient brenniksim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(BRENNIK_BUILD_WINDOWS)
  install(TARGETS brennik_windows_module LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(FILES packaging/brennikclient.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
endif()
# The configuration to begin with; each user's own stands in the program's folder.
install(FILES packaging/BrennikClient.ini DESTINATION ${CMAKE_INSTALL_DATADIR}/brennikclient)
install(FILES packaging/brennikclient.1 packaging/brenniksim.1
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md docs/user-guide.md docs/architecture.md docs/wire-format.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs/images DESTINATION ${CMAKE_INSTALL_DOCDIR})
# Below the prefix, as the system looks for rules in /usr/lib and /usr/local/lib.
install(FILES packaging/70-brennikclient-serial.rules DESTINATION lib/udev/rules.d)
