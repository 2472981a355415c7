# Install rules for the program's shipped files.
#
# The program binary installs itself from src/qt. Here: the desktop entry and icon,
# the AppStream metadata, the manual page, the copyright and changelog, and the
# files every data folder starts with, NoPic.jpg and Readme.htm. The program never
# writes those two files, and it reads them from the user's own data folder, so
# they are installed to share/quillmere/ and the program copies them from there
# (found beside its own folder) into ~/.local/share/Quillmere/ at each start when
# they are missing there, making that folder first if need be.

include(GNUInstallDirs)

install(FILES ${PROJECT_SOURCE_DIR}/packaging/quillmere.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/quillmere.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/48x48/apps)
install(FILES ${PROJECT_SOURCE_DIR}/data/NoPic.jpg ${PROJECT_SOURCE_DIR}/data/Readme.htm
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quillmere)

# What software centres show (the id is explained in the file), with the
# screenshot it names, shipped beside the data folder's files.
install(FILES ${PROJECT_SOURCE_DIR}/packaging/invalid.quillmere.Quillmere.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/main-window.png
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quillmere)

# The manual page and the Debian changelog, gzipped as Debian ships them: at
# most compression and without the file's name and time (-n), so that the
# same source gives the same bytes. The copyright (DEP-5) goes beside the
# changelog. Installed by every install, not only the package's: they do no harm
# under /usr/local, and `man quillmere` then works there too.
find_program(QM_GZIP gzip REQUIRED)
set(QM_DOC_DIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/quillmere)
set(_qm_gzipped "")
foreach(_qm_source quillmere.1 changelog)
  set(_qm_out ${CMAKE_CURRENT_BINARY_DIR}/packaging/${_qm_source}.gz)
  add_custom_command(OUTPUT ${_qm_out}
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/packaging/${_qm_source}
            ${CMAKE_CURRENT_BINARY_DIR}/packaging/${_qm_source}
    COMMAND ${QM_GZIP} -9 -n -f ${CMAKE_CURRENT_BINARY_DIR}/packaging/${_qm_source}
    DEPENDS ${PROJECT_SOURCE_DIR}/packaging/${_qm_source}
    COMMENT "Compressing packaging/${_qm_source}"
    VERBATIM)
  list(APPEND _qm_gzipped ${_qm_out})
endforeach()
add_custom_target(quillmere_gzipped_docs ALL DEPENDS ${_qm_gzipped})
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/packaging/quillmere.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.gz ${PROJECT_SOURCE_DIR}/packaging/copyright
        DESTINATION ${QM_DOC_DIR})

# lintian's overrides, each with its reason beside it; the one about fortify
# only where the build has the hardening flags, so that it never hides a build
# without them.
set(_qm_override_sources ${PROJECT_SOURCE_DIR}/packaging/lintian-overrides)
if(QM_HARDENING_FLAGS)
  list(APPEND _qm_override_sources ${PROJECT_SOURCE_DIR}/packaging/lintian-overrides-hardened)
endif()
set(_qm_overrides "")
foreach(_qm_source ${_qm_override_sources})
  file(READ ${_qm_source} _qm_text)
  string(APPEND _qm_overrides "${_qm_text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_qm_source})
endforeach()
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/packaging/lintian-overrides
     CONTENT "${_qm_overrides}" @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/packaging/lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides RENAME quillmere)

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
