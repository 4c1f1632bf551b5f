# The window is driven through the plug-in's entry points, and asks the recording plug-ins.
target_sources(test-random-use PRIVATE
  ${CMAKE_SOURCE_DIR}/structure-editor/window/Plugin.cpp structure-editor/CompareRows.cpp)
target_include_directories(test-random-use PRIVATE structure-editor)
target_compile_definitions(test-random-use PRIVATE
  RECORDING_PLUGINS="${EDITOR_TEST_PLUGINS}/recording")
add_dependencies(test-random-use editor-test-plugin-SolidVolume
  editor-test-plugin-Electrostatics)
