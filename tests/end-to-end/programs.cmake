# The programs and folders that the end-to-end tests start and look into.
add_test_plugin_of(end-to-end FaultyWindow FaultyWindow.cpp)
add_test_plugin_of(end-to-end Waiting Waiting.cpp)
add_dependencies(test-end-to-end workbench Vuxo View3D
  test-plugin-LacksIsDone test-plugin-ThrowsStatic test-plugin-ThrowsIsDone test-plugin-ThrowsCleanup
  test-plugin-ThrowsExecute0 test-plugin-Good)
# A session that is killed, and the start after it.
add_executable(crash-session crash-proof/CrashSession.cpp crash-proof/Session.cpp crash-proof/Session.h)
target_link_libraries(crash-session PRIVATE workbench-parts test-support)
target_compile_definitions(crash-session PRIVATE
  SOURCE_DIR="${CMAKE_SOURCE_DIR}" STAGE_PLUGINS="${STAGE_PLUGINS}")
add_dependencies(crash-session Vuxo View3D)
add_dependencies(test-end-to-end crash-session)
# The one part of the program that no run of it shows.
target_sources(test-end-to-end PRIVATE ${CMAKE_SOURCE_DIR}/workbench/StopSignals.cpp)
target_include_directories(test-end-to-end PRIVATE ${CMAKE_SOURCE_DIR}/workbench)
foreach(library Core Gui Widgets)
  list(APPEND qt_includes $<TARGET_PROPERTY:Qt6::${library},INTERFACE_INCLUDE_DIRECTORIES>)
endforeach()
target_compile_definitions(test-end-to-end PRIVATE
  WORKBENCH="$<TARGET_FILE:workbench>" CRASH_SESSION="$<TARGET_FILE:crash-session>" WORKBENCH_VERSION="${PROJECT_VERSION}"
  TEST_PLUGINS="${TEST_PLUGINS}" CMAKE="${CMAKE_COMMAND}" BUILD_DIR="${CMAKE_BINARY_DIR}"
  INSTALL_BIN="${CMAKE_INSTALL_BINDIR}" INSTALL_LIB="${INSTALL_LIB}"
  INSTALL_DATA="${INSTALL_DATA}" INSTALL_INCLUDE="${INSTALL_INCLUDE}" INSTALL_DOC="${INSTALL_DOC}"
  COMPILER="${CMAKE_CXX_COMPILER}"
  QT_INCLUDES="$<JOIN:$<FILTER:${qt_includes},EXCLUDE,^/usr/include$>,:>")
