# Optimised builds take Debian's hardening flags as dpkg-buildflags gives them:
# fortified string and memory functions, the stack protector, a read-only
# relocation table bound at start (relro, bind-now). That is how a Debian
# package of the program is built, and the release build of
# scripts/install-and-run and the package's build are both such builds.
# The build type keeps choosing optimisation and debug information, so -g and
# -O2 are left out of what dpkg-buildflags adds. Debug builds stay as they are:
# fortify needs optimisation and would only warn there.
#
# dpkg-buildflags honours the usual DEB_BUILD_MAINT_OPTIONS, DEB_CXXFLAGS_APPEND,
# etc. from the environment at configure time; without dpkg-dev the flags are
# left out with a note.

if(NOT CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
  return()
endif()

find_program(QM_DPKG_BUILDFLAGS dpkg-buildflags)
if(NOT QM_DPKG_BUILDFLAGS)
  message(STATUS "dpkg-buildflags not found (package dpkg-dev): building without Debian's hardening flags")
  return()
endif()

set(_qm_maint_options "$ENV{DEB_BUILD_MAINT_OPTIONS}")
if(_qm_maint_options STREQUAL "")
  set(_qm_maint_options "hardening=+all")
endif()

set(QM_HARDENING_FLAGS "")
foreach(_qm_kind CPPFLAGS CXXFLAGS LDFLAGS)
  # Run in the source folder, so that the -ffile-prefix-map it adds maps the
  # source paths to "." and the binary does not hold this machine's paths.
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "DEB_BUILD_MAINT_OPTIONS=${_qm_maint_options}"
            "DEB_CXXFLAGS_MAINT_STRIP=-g -O2" "${QM_DPKG_BUILDFLAGS}" --get ${_qm_kind}
    WORKING_DIRECTORY "${PROJECT_SOURCE_DIR}"
    OUTPUT_VARIABLE _qm_flags OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE _qm_rc)
  if(NOT _qm_rc EQUAL 0)
    message(FATAL_ERROR "dpkg-buildflags --get ${_qm_kind} failed (${_qm_rc})")
  endif()
  separate_arguments(_qm_flags UNIX_COMMAND "${_qm_flags}")
  if(_qm_kind STREQUAL "LDFLAGS")
    add_link_options(${_qm_flags})
  else()
    add_compile_options(${_qm_flags})
  endif()
  list(APPEND QM_HARDENING_FLAGS ${_qm_flags})
endforeach()
list(JOIN QM_HARDENING_FLAGS " " _qm_flags)
message(STATUS "Debian hardening flags (dpkg-buildflags): ${_qm_flags}")
