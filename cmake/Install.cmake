# What `cmake --install` and the packages hold. The programs lie in lib/photrak, with the catalogue beside them as they
# expect it; bin has links to them.
include(GNUInstallDirs)
set(home ${CMAKE_INSTALL_LIBDIR}/photrak)

# photrak_install_program(TARGET COMPONENT): the program, its link and its manual page.
function(photrak_install_program target component)
  install(TARGETS ${target} RUNTIME DESTINATION ${home} COMPONENT ${component})
  set(link "\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}")
  install(CODE "file(MAKE_DIRECTORY \"${link}\")
    file(CREATE_LINK ../${home}/${target} \"${link}/${target}\" SYMBOLIC)" COMPONENT ${component})
  # Debian wants manual pages compressed, without a date.
  set(page ${PROJECT_BINARY_DIR}/${target}.1.gz)
  execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/packaging/man/${target}.1 OUTPUT_FILE ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT ${component})
endfunction()

photrak_install_program(photrak photrak)
install(DIRECTORY catalogue/models catalogue/superblocks examples DESTINATION ${home} COMPONENT photrak)
install(DIRECTORY catalogue/icons/ DESTINATION ${home}/models COMPONENT photrak)
install(DIRECTORY include/photrak DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT photrak)
install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/photrak COMPONENT photrak)
install(FILES ${PROJECT_BINARY_DIR}/changelog-photrak.gz RENAME changelog.gz OPTIONAL
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/photrak COMPONENT photrak)

if(TARGET photrak-workbench)
  photrak_install_program(photrak-workbench workbench)
  photrak_install_program(vistrax workbench)
  install(DIRECTORY docs/guide docs/models docs/formats DESTINATION ${home}/help COMPONENT workbench)
  install(FILES packaging/org.photrak.Workbench.desktop packaging/org.photrak.Vistrax.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT workbench)
  install(FILES packaging/org.photrak.Workbench.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT workbench)
  install(FILES packaging/photrak.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT workbench)
  foreach(name Workbench Vistrax)
    set(icon photrak)
    if(name STREQUAL "Vistrax")
      set(icon graph-view)
    endif()
    install(FILES catalogue/icons/${icon}.svg RENAME org.photrak.${name}.svg
      DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT workbench)
  endforeach()
  install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/photrak-workbench COMPONENT workbench)
  install(FILES ${PROJECT_BINARY_DIR}/changelog-photrak-workbench.gz RENAME changelog.gz OPTIONAL
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/photrak-workbench COMPONENT workbench)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "Photrak")
set(CPACK_PACKAGE_CONTACT "The Photrak developers <developers@photrak.example>")
set(CPACK_PACKAGE_HOMEPAGE_URL "https://photrak.example")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL photrak)
if(TARGET photrak-workbench)
  list(APPEND CPACK_COMPONENTS_ALL workbench)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PHOTRAK_PACKAGE_NAME photrak)
set(CPACK_COMPONENT_PHOTRAK_DESCRIPTION "simulator of fiber-optical links
Runs links of lasers, modulators, fibers, amplifiers, filters and receivers
in the time domain and writes traces, spectra, eye diagrams and error rates.")
set(CPACK_DEBIAN_WORKBENCH_PACKAGE_NAME photrak-workbench)
set(CPACK_DEBIAN_WORKBENCH_PACKAGE_DEPENDS "photrak (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_WORKBENCH_DESCRIPTION "window to draw and run fiber-optical links
Draws links as blocks wired through their ports, runs them and shows eyes,
spectra and error rates; with the viewer vistrax.")
include(CPack)
