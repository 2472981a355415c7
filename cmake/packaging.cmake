# The Debian package, quillmere_3.0.0_amd64.deb: what the install rules put
# under /usr (the program, the desktop entry, the icon, the AppStream metadata,
# the manual page, the copyright and changelog, the shipped files in
# share/quillmere/), with the Debian packages it needs declared. Built from a
# Release build it carries Debian's hardening flags (cmake/hardening.cmake);
# its program is stripped, .comment included (src/qt/CMakeLists.txt).
#   cmake --build <build> --target package      (or: cpack --config <build>/CPackConfig.cmake)
# Menus and icon caches are refreshed on the target by the triggers of
# desktop-file-utils and the icon theme, so the package needs no scripts.

# Only for the program's own build, not when another project takes it in.
if(NOT CMAKE_SOURCE_DIR STREQUAL PROJECT_SOURCE_DIR)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillmere)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Quillmere")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "personal inventory database for the desktop")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CHECKSUM SHA256)

# <name>_<version>_<architecture>.deb
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Quillmere maintainers <maintainers@quillmere.invalid>")
# The extended description: lines kept under 80 columns (CPack takes them as
# they are), a paragraph break as an empty line.
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
  "Quillmere keeps track of what you own. You make categories, such as car"
  "parts or kitchen things, and each category is a table of items with their"
  "original cost, current value, where and when they were bought, when their"
  "warranty ends, a serial number or description, and a picture."
  ""
  "It shows the totals of each category, prints a category, and copies the"
  "whole database to a backup disk, such as a USB stick mounted at"
  "/media/floppy, and back. Everything is stored as you work, as plain text"
  "files in ~/.local/share/Quillmere/.")
# The libraries the program links come from dpkg-shlibdeps; the Qt platform
# plugins (no window without them) and the window's font are named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-comic-neue")

include(CPack)
