# Install rules for the program's shipped files.
#
# The program binary installs itself from src/qt. Here: the desktop entry and icon,
# and the files every data folder starts with. The program never writes those two
# files, and it reads them from the user's own data folder, so they are installed
# to share/quillmere/ and the program copies them from there (found beside its own
# folder) into ~/.local/share/Quillmere/ at each start when they are missing there,
# making that folder first if need be.

include(GNUInstallDirs)

install(FILES ${PROJECT_SOURCE_DIR}/packaging/quillmere.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/quillmere.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/48x48/apps)
install(FILES ${PROJECT_SOURCE_DIR}/data/NoPic.jpg ${PROJECT_SOURCE_DIR}/data/Readme.htm
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quillmere)

# Menus and icon themes keep caches; refresh them so the entry shows up without a
# new login. Skipped when staging into DESTDIR (a package build refreshes on the
# target), and a missing tool or a failed refresh never fails the install.
install(CODE "set(_qm_datadir \"${CMAKE_INSTALL_DATADIR}\")")
install(CODE [[
  if("$ENV{DESTDIR}" STREQUAL "")
    set(_qm_share "${CMAKE_INSTALL_PREFIX}/${_qm_datadir}")
    find_program(_qm_desktop_db update-desktop-database)
    if(_qm_desktop_db)
      execute_process(COMMAND "${_qm_desktop_db}" -q "${_qm_share}/applications"
                      RESULT_VARIABLE _qm_rc OUTPUT_QUIET ERROR_QUIET)
    endif()
    find_program(_qm_icon_cache gtk-update-icon-cache)
    if(_qm_icon_cache)
      # -t: /usr/local's hicolor tree usually has no index.theme of its own.
      execute_process(COMMAND "${_qm_icon_cache}" -q -f -t "${_qm_share}/icons/hicolor"
                      RESULT_VARIABLE _qm_rc OUTPUT_QUIET ERROR_QUIET)
    endif()
  endif()
]])
