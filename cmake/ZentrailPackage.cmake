# Debian packages through CPack: `cpack -G DEB` in the build folder makes zentrail (what a user
# runs, the component runtime) and zentrail-dev (the component client: headers, the CMake packages,
# zentrail.pc, the static client), for /usr.

set(_deb ${CMAKE_SOURCE_DIR}/dist/debian)
set(_debout ${CMAKE_BINARY_DIR}/dist/debian)

# Each package carries its copyright and changelog, as Debian wants them.
configure_file(${_deb}/changelog.in ${_debout}/changelog @ONLY)
find_program(ZENTRAIL_GZIP gzip)
if(ZENTRAIL_GZIP)
  add_custom_command(OUTPUT ${_debout}/changelog.gz
                     COMMAND sh -c "'${ZENTRAIL_GZIP}' -9n < '${_debout}/changelog' > '${_debout}/changelog.gz'"
                     DEPENDS ${_debout}/changelog VERBATIM)
  add_custom_target(zentrail_changelog ALL DEPENDS ${_debout}/changelog.gz)
  foreach(comp runtime client)
    set(_pkg zentrail)
    if(comp STREQUAL "client")
      set(_pkg zentrail-dev)
    endif()
    install(FILES ${_deb}/copyright ${_debout}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${_pkg}
            COMPONENT ${comp})
  endforeach()
endif()

# The registry file is the administrator's to change: dpkg keeps the changes on an upgrade. The
# libraries are in the loader's path, so its cache is brought up to date.
file(WRITE ${_debout}/runtime/conffiles "/etc/zentrail/registry.ini\n")
file(WRITE ${_debout}/runtime/triggers "activate-noawait ldconfig\n")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zentrail)
set(CPACK_PACKAGE_VENDOR Orvan)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Orvan <zentrail@orvan.com>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime client)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# Each description's first line is its package's synopsis; a package-wide summary would be put
# before both.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME zentrail)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${_debout}/runtime/conffiles;${_debout}/runtime/triggers")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "live viewer and logging client for tracing programs
Programs instrumented with the Zentrail logging client send structured
messages: text, warnings, errors, method enter and exit, objects, tables,
images, XML, colours and timings. The live viewer keeps every message of a
run and shows it at once in filtered tabs with a collapsible call structure.

This package holds the viewer with its sample plug-ins, the dispatcher that
routes messages (also as a socket-activated systemd user service), ztlog to
read log files, zentrail-send to log from a shell, and the shared client.")

set(CPACK_DEBIAN_CLIENT_PACKAGE_NAME zentrail-dev)
set(CPACK_DEBIAN_CLIENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_CLIENT_PACKAGE_DEPENDS "zlib1g-dev, libpng-dev")
# Only the Qt adaptor needs Qt's development files.
set(CPACK_DEBIAN_CLIENT_PACKAGE_SUGGESTS "qt6-base-dev")
set(CPACK_COMPONENT_CLIENT_DEPENDS runtime)
set(CPACK_DEBIAN_CLIENT_DESCRIPTION "development files of the Zentrail logging client and plug-ins
The headers of the C++ logging client, its CMake package (find_package
Zentrail) and pkg-config file, the static client library, and the headers
for authors of viewer plug-ins.")

# The packaged files lie where the loader looks anyway; a run path would only get in the way of
# the system's own search (and Debian forbids it).
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_SOURCE_DIR}/cmake/ZentrailPackageStrip.cmake)

include(CPack)
