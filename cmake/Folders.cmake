# Where things stand, in the build tree and installed alike, so that a program finds its libraries,
# plug-ins and data by the same relative paths from any place.
include(GNUInstallDirs)
set(INSTALL_LIB ${CMAKE_INSTALL_LIBDIR}/structure-editor)
set(INSTALL_PLUGINS ${INSTALL_LIB}/plugins)
set(INSTALL_DATA ${CMAKE_INSTALL_DATADIR}/structure-editor)
set(INSTALL_INCLUDE ${CMAKE_INSTALL_INCLUDEDIR}/structure-editor)
set(INSTALL_DOC ${CMAKE_INSTALL_DOCDIR})

# Where a program looks for libraries is told from its own place. Staged targets are linked with the
# run path that is installed: to change one afterwards, room is kept with empty entries, and each of
# those means the working directory.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

set(STAGE ${CMAKE_BINARY_DIR}/stage)
set(STAGE_PLUGINS ${STAGE}/${INSTALL_PLUGINS})

file(RELATIVE_PATH LIB_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${INSTALL_LIB})
file(RELATIVE_PATH PLUGINS_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${INSTALL_PLUGINS})
file(RELATIVE_PATH DATA_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${INSTALL_DATA})

# The build tree reads the data where they are written.
file(MAKE_DIRECTORY ${STAGE}/${CMAKE_INSTALL_DATADIR})
file(CREATE_LINK ${CMAKE_SOURCE_DIR}/data ${STAGE}/${INSTALL_DATA} SYMBOLIC)
