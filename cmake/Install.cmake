install(TARGETS brennikclient brenniksim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES packaging/brenniksim.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES README.md docs/user-guide.md docs/architecture.md docs/wire-format.md
  DESTINATION ${CMAKE_INSTALL_DOCDIR})
