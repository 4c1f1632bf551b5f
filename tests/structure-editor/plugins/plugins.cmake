# Plug-ins beside the Structure Editor, in folders as the host finds them.
set(EDITOR_TEST_PLUGINS ${CMAKE_CURRENT_BINARY_DIR}/editor-plugins)

function(add_editor_test_plugin folder type name source)
  set(target editor-test-plugin-${name})
  add_library(${target} MODULE structure-editor/plugins/${source})
  # As for every plug-in, the host's symbols are resolved when the host loads it.
  target_link_libraries(${target} PRIVATE plugin-frame)
  use_precompiled(${target} precompiled)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY ${EDITOR_TEST_PLUGINS}/${folder}/${type})
  add_dependencies(test-structure-editor ${target})
endfunction()

add_editor_test_plugin(recording Create SolidVolume RecordingPlugin.cpp)
add_editor_test_plugin(recording Calculate Electrostatics RecordingPlugin.cpp)
add_editor_test_plugin(second-view View SecondView SecondView.cpp)

target_compile_definitions(test-structure-editor PRIVATE
  EDITOR_TEST_PLUGINS="${EDITOR_TEST_PLUGINS}")
# Every repaint that the window asks its tree for goes by RepaintCount, and what it has destroyed by
# DestroyWatch.
target_link_options(test-structure-editor PRIVATE -Wl,--wrap=_ZN8TreeView13triggerUpdateEv
  -Wl,--wrap=_ZN5TAVIK9DataMaker7DestroyEPNS_8CompoundE)
