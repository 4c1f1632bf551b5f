# The window is driven through the plug-in's entry points, and asks the recording plug-ins.
target_sources(test-random-use PRIVATE
  ${CMAKE_SOURCE_DIR}/structure-editor/window/Plugin.cpp structure-editor/CompareRows.cpp)
# The precompiled header of the tests is without the network.
target_compile_options(test-random-use PRIVATE -UQT_NETWORK_LIB)
target_include_directories(test-random-use PRIVATE structure-editor)
target_compile_definitions(test-random-use PRIVATE
  RECORDING_PLUGINS="${EDITOR_TEST_PLUGINS}/recording")
add_dependencies(test-random-use editor-test-plugin-SolidVolume
  editor-test-plugin-Electrostatics)
