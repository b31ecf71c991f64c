# Where an install puts what: GNU folders below the prefix, and one folder of the viewer's own.
#
# The viewer loads its plug-ins from the folder PlugIns beside its executable, and a folder below
# bin is no place for them, so the viewer and PlugIns live together in lib/zentrail and bin holds a
# link to the viewer (the viewer finds its folder through the resolved /proc/self/exe).
include(GNUInstallDirs)
set(ZENTRAIL_INSTALL_VIEWERDIR ${CMAKE_INSTALL_LIBDIR}/zentrail)
set(ZENTRAIL_INSTALL_HELP_DIR ${CMAKE_INSTALL_DATADIR}/zentrail/Help)

# Run paths and the help folder relative to where the files lie, so that any prefix works.
file(RELATIVE_PATH ZENTRAIL_VIEWER_TO_LIBDIR /x/${ZENTRAIL_INSTALL_VIEWERDIR} /x/${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH ZENTRAIL_PLUGINS_TO_LIBDIR /x/${ZENTRAIL_INSTALL_VIEWERDIR}/PlugIns /x/${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH ZENTRAIL_VIEWER_TO_HELP /x/${ZENTRAIL_INSTALL_VIEWERDIR} /x/${ZENTRAIL_INSTALL_HELP_DIR})
