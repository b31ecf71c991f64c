# Run by `cmake --install` (and CPack): writes the files that name the prefix of this install.
# Set by the caller: ZENTRAIL_BINDIR, ZENTRAIL_VIEWERDIR, ZENTRAIL_DATADIR (relative to the prefix),
# ZENTRAIL_REGISTRY_INSTALL_FILE, ZENTRAIL_INSTALL_SYSTEMD_UNITS, ZENTRAIL_SYSTEMD_USER_UNIT_DIR,
# and ZENTRAIL_DIST (the sources).

set(_prefix "${CMAKE_INSTALL_PREFIX}")
set(ZENTRAIL_FULL_BINDIR "${_prefix}/${ZENTRAIL_BINDIR}")

# The registry file: the machine-wide one for a system install, else one inside the prefix, which
# the programs read only when ZENTRAIL_REGISTRY names it (they find their dispatcher and help
# without it).
set(_registry "${ZENTRAIL_REGISTRY_INSTALL_FILE}")
if(NOT _registry)
  if(_prefix STREQUAL "/usr")
    set(_registry /etc/zentrail/registry.ini)
  else()
    set(_registry "${_prefix}/etc/zentrail/registry.ini")
  endif()
endif()

# The product key is ours; the other sections of a file already there (aliases, policies) stay.
set(_header "[Software\\Orvan\\Zentrail\\5.0]")
set(_kept "")
if(EXISTS "$ENV{DESTDIR}${_registry}")
  file(READ "$ENV{DESTDIR}${_registry}" _kept)
  string(FIND "${_kept}" "${_header}" _start)
  if(_start GREATER -1)
    string(SUBSTRING "${_kept}" 0 ${_start} _before)
    math(EXPR _after_header "${_start} + 1")
    string(SUBSTRING "${_kept}" ${_after_header} -1 _rest)
    string(FIND "${_rest}" "\n[" _next)
    if(_next GREATER -1)
      math(EXPR _next "${_next} + 1")
      string(SUBSTRING "${_rest}" ${_next} -1 _rest)
    else()
      set(_rest "")
    endif()
    set(_kept "${_before}${_rest}")
  endif()
endif()
# Written in place rather than staged in the build tree, so that installs of one build that run
# at the same time (a package and a prefix) cannot take each other's text.
set(_registry_text
    "${_header}\nInstallPath=${_prefix}/${ZENTRAIL_DATADIR}/zentrail/\nDispatcher=${ZENTRAIL_FULL_BINDIR}/zentrail-dispatcher\n${_kept}")
message(STATUS "Installing: $ENV{DESTDIR}${_registry}")
file(WRITE "$ENV{DESTDIR}${_registry}" "${_registry_text}")
list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${_registry}")

if(ZENTRAIL_INSTALL_SYSTEMD_UNITS)
  set(_service "${_prefix}/${ZENTRAIL_SYSTEMD_USER_UNIT_DIR}/zentrail-dispatcher.service")
  message(STATUS "Installing: $ENV{DESTDIR}${_service}")
  configure_file("${ZENTRAIL_DIST}/systemd/zentrail-dispatcher.service.in" "$ENV{DESTDIR}${_service}" @ONLY)
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${_service}")
endif()

# The viewer's command in bin: a relative link, so that the prefix can move.
file(RELATIVE_PATH _viewer_from_bin "/x/${ZENTRAIL_BINDIR}" "/x/${ZENTRAIL_VIEWERDIR}/zentrail-viewer")
if(EXISTS "$ENV{DESTDIR}${_prefix}/${ZENTRAIL_VIEWERDIR}/zentrail-viewer")
  file(MAKE_DIRECTORY "$ENV{DESTDIR}${ZENTRAIL_FULL_BINDIR}")
  message(STATUS "Installing: $ENV{DESTDIR}${ZENTRAIL_FULL_BINDIR}/zentrail-viewer -> ${_viewer_from_bin}")
  file(CREATE_LINK "${_viewer_from_bin}" "$ENV{DESTDIR}${ZENTRAIL_FULL_BINDIR}/zentrail-viewer" SYMBOLIC)
  list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${ZENTRAIL_FULL_BINDIR}/zentrail-viewer")
endif()
