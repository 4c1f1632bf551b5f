# The folders, the same in the build tree and installed, so that a program finds its libraries,
# plug-ins and data by the same relative paths from any place.
include(GNUInstallDirs)
set(INSTALL_LIB ${CMAKE_INSTALL_LIBDIR}/structure-editor)
set(INSTALL_PLUGINS ${INSTALL_LIB}/plugins)
set(INSTALL_DATA ${CMAKE_INSTALL_DATADIR}/structure-editor)
set(INSTALL_INCLUDE ${CMAKE_INSTALL_INCLUDEDIR}/structure-editor)
set(INSTALL_DOC ${CMAKE_INSTALL_DOCDIR})

# Run paths are relative to the program ($ORIGIN). Staged targets are linked with the final run
# path: changing it at installation would need padding with empty entries, and an empty entry means
# the working directory.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

set(STAGE ${CMAKE_BINARY_DIR}/stage)
set(STAGE_PLUGINS ${STAGE}/${INSTALL_PLUGINS})

file(RELATIVE_PATH LIB_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${INSTALL_LIB})
file(RELATIVE_PATH PLUGINS_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${INSTALL_PLUGINS})
file(RELATIVE_PATH DATA_FROM_BIN /${CMAKE_INSTALL_BINDIR} /${INSTALL_DATA})

# The build tree uses the data in the source folder.
file(MAKE_DIRECTORY ${STAGE}/${CMAKE_INSTALL_DATADIR})
file(CREATE_LINK ${CMAKE_SOURCE_DIR}/data ${STAGE}/${INSTALL_DATA} SYMBOLIC)
