# What an install adds to the programs and libraries: the desktop entry, icons, file types and
# AppStream data, the manual pages, the help pages, the systemd user units of the dispatcher and the
# registry file that names the installed dispatcher and install folder.
#
# Everything is found relative to the installed programs (the libraries through an $ORIGIN run
# path, the plug-ins in PlugIns beside the viewer, the help in share/zentrail/Help), so an install
# under any prefix works without the machine-wide registry file. The layout: ZentrailLayout.cmake.
#
# Components: "runtime" is what a user runs, "client" what a developer builds against (headers, the
# CMake packages, zentrail.pc, the static client and the unversioned library links), with runtime.

option(ZENTRAIL_INSTALL_SYSTEMD_UNITS "Install the dispatcher's systemd user units" ON)
set(ZENTRAIL_SYSTEMD_USER_UNIT_DIR "lib/systemd/user" CACHE STRING
    "Folder of systemd user units, relative to the install prefix")
set(ZENTRAIL_REGISTRY_INSTALL_FILE "" CACHE STRING
    "Registry file written by the install; empty: /etc/zentrail/registry.ini for the prefix /usr, else <prefix>/etc/zentrail/registry.ini")

set(_dist ${CMAKE_SOURCE_DIR}/dist)
set(_out ${CMAKE_BINARY_DIR}/dist)
set(ZENTRAIL_APP_ID com.orvan.Zentrail)

# ---- Desktop integration
install(FILES ${_dist}/${ZENTRAIL_APP_ID}.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications
        COMPONENT runtime)
configure_file(${_dist}/${ZENTRAIL_APP_ID}.metainfo.xml.in ${_out}/${ZENTRAIL_APP_ID}.metainfo.xml @ONLY)
install(FILES ${_out}/${ZENTRAIL_APP_ID}.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo
        COMPONENT runtime)
install(FILES ${_dist}/${ZENTRAIL_APP_ID}.mime.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages
        RENAME ${ZENTRAIL_APP_ID}.xml COMPONENT runtime)
foreach(size 16 32 48 64 128 256)
  install(FILES ${_dist}/icons/${ZENTRAIL_APP_ID}-${size}.png
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
          RENAME ${ZENTRAIL_APP_ID}.png COMPONENT runtime)
endforeach()
install(FILES ${_dist}/icons/${ZENTRAIL_APP_ID}.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps
        COMPONENT runtime)

# The viewer carries its icon too, for a window system that does not look it up by the desktop entry.
if(TARGET zentrail-viewer)
  target_sources(zentrail-viewer PRIVATE ${_dist}/icons/${ZENTRAIL_APP_ID}.qrc)
endif()

# ---- Help pages, where the viewer looks for them when no install path is registered
if(EXISTS ${CMAKE_SOURCE_DIR}/help)
  # The pages and what they show; scripts and sources beside them stay in the repository.
  install(DIRECTORY ${CMAKE_SOURCE_DIR}/help/ DESTINATION ${ZENTRAIL_INSTALL_HELP_DIR} COMPONENT runtime
          FILES_MATCHING PATTERN "*.htm" PATTERN "*.html" PATTERN "*.css" PATTERN "*.png" PATTERN "*.svg"
                         PATTERN "*.jpg" PATTERN "*.js")
endif()
target_compile_definitions(zentrail_support PRIVATE ZENTRAIL_HELP_BESIDE_PROGRAM="${ZENTRAIL_VIEWER_TO_HELP}")

# ---- Manual pages, from scdoc sources, compressed as Debian wants them
find_program(ZENTRAIL_SCDOC scdoc)
find_program(ZENTRAIL_GZIP gzip)
if(ZENTRAIL_SCDOC AND ZENTRAIL_GZIP)
  # One source per page, dist/man/<program>.<section>.scd; a new program only adds its file.
  file(GLOB _sources CONFIGURE_DEPENDS ${_dist}/man/*.scd)
  set(_pages)
  foreach(_src ${_sources})
    get_filename_component(_name ${_src} NAME_WLE)
    string(REGEX MATCH "[1-9]$" _section ${_name})
    set(_page ${_out}/man/${_name}.gz)
    # -n keeps the time stamp out of the file, so that two builds give the same bytes.
    add_custom_command(OUTPUT ${_page}
                       COMMAND ${CMAKE_COMMAND} -E make_directory ${_out}/man
                       COMMAND sh -c "'${ZENTRAIL_SCDOC}' < '${_src}' > '${_out}/man/${_name}' && '${ZENTRAIL_GZIP}' -9n < '${_out}/man/${_name}' > '${_page}'"
                       DEPENDS ${_src} VERBATIM)
    list(APPEND _pages ${_page})
    install(FILES ${_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${_section} COMPONENT runtime)
  endforeach()
  add_custom_target(zentrail_man ALL DEPENDS ${_pages})
else()
  message(WARNING "scdoc or gzip not found: the manual pages are neither built nor installed")
endif()

# ---- Install-time files: they name the prefix the install goes to, which `cmake --install
# --prefix` and CPack choose after configuration.
install(CODE "
  set(ZENTRAIL_BINDIR \"${CMAKE_INSTALL_BINDIR}\")
  set(ZENTRAIL_VIEWERDIR \"${ZENTRAIL_INSTALL_VIEWERDIR}\")
  set(ZENTRAIL_DATADIR \"${CMAKE_INSTALL_DATADIR}\")
  set(ZENTRAIL_REGISTRY_INSTALL_FILE \"${ZENTRAIL_REGISTRY_INSTALL_FILE}\")
  set(ZENTRAIL_INSTALL_SYSTEMD_UNITS ${ZENTRAIL_INSTALL_SYSTEMD_UNITS})
  set(ZENTRAIL_SYSTEMD_USER_UNIT_DIR \"${ZENTRAIL_SYSTEMD_USER_UNIT_DIR}\")
  set(ZENTRAIL_DIST \"${_dist}\")
  include(\"${CMAKE_SOURCE_DIR}/cmake/ZentrailInstallTime.cmake\")
" COMPONENT runtime)
if(ZENTRAIL_INSTALL_SYSTEMD_UNITS)
  install(FILES ${_dist}/systemd/zentrail-dispatcher.socket DESTINATION ${ZENTRAIL_SYSTEMD_USER_UNIT_DIR}
          COMPONENT runtime)
endif()
