# Run by `cmake --install` (and CPack): writes the files that name the prefix of this install.
# Set by the caller: ZENTRAIL_BINDIR, ZENTRAIL_VIEWERDIR, ZENTRAIL_DATADIR (relative to the prefix),
# ZENTRAIL_REGISTRY_INSTALL_FILE, ZENTRAIL_INSTALL_SYSTEMD_UNITS, ZENTRAIL_SYSTEMD_USER_UNIT_DIR,
# ZENTRAIL_DIST (the sources) and ZENTRAIL_STAGE (a folder of the build tree).

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
file(WRITE "${ZENTRAIL_STAGE}/registry.ini"
     "${_header}\nInstallPath=${_prefix}/${ZENTRAIL_DATADIR}/zentrail/\nDispatcher=${ZENTRAIL_FULL_BINDIR}/zentrail-dispatcher\n${_kept}")
get_filename_component(_registry_dir "${_registry}" DIRECTORY)
get_filename_component(_registry_name "${_registry}" NAME)
# What was there has been read into the new text; without this an older file might be kept as up to date.
file(REMOVE "$ENV{DESTDIR}${_registry}")
file(INSTALL "${ZENTRAIL_STAGE}/registry.ini" DESTINATION "${_registry_dir}" RENAME "${_registry_name}")

if(ZENTRAIL_INSTALL_SYSTEMD_UNITS)
  configure_file("${ZENTRAIL_DIST}/systemd/zentrail-dispatcher.service.in"
                 "${ZENTRAIL_STAGE}/zentrail-dispatcher.service" @ONLY)
  file(INSTALL "${ZENTRAIL_STAGE}/zentrail-dispatcher.service"
       DESTINATION "${_prefix}/${ZENTRAIL_SYSTEMD_USER_UNIT_DIR}")
endif()

# The viewer's command in bin: a relative link, so that the prefix can move.
file(RELATIVE_PATH _viewer_from_bin "/x/${ZENTRAIL_BINDIR}" "/x/${ZENTRAIL_VIEWERDIR}/zentrail-viewer")
if(EXISTS "$ENV{DESTDIR}${_prefix}/${ZENTRAIL_VIEWERDIR}/zentrail-viewer")
  file(MAKE_DIRECTORY "$ENV{DESTDIR}${ZENTRAIL_FULL_BINDIR}")
  message(STATUS "Installing: $ENV{DESTDIR}${ZENTRAIL_FULL_BINDIR}/zentrail-viewer -> ${_viewer_from_bin}")
  file(CREATE_LINK "${_viewer_from_bin}" "$ENV{DESTDIR}${ZENTRAIL_FULL_BINDIR}/zentrail-viewer" SYMBOLIC)
endif()
