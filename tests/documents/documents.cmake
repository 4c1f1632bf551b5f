# The window with the command and the tree with the column that docs/architecture.md adds to them as
# examples, and the plain model that knows of the command: copies of their files with the document's
# pieces in them, and the other objects of the plug-in as they are.
set(document ${CMAKE_SOURCE_DIR}/docs/architecture.md)
set(script ${CMAKE_CURRENT_SOURCE_DIR}/documents/MakeExample.cmake)
set(example_root ${CMAKE_CURRENT_BINARY_DIR}/example)
# add_example(SECTION FOLDER NAME PATH...): the files with what the section says, in a folder of the
# examples.
function(add_example section folder name)
  set(copies)
  set(originals)
  foreach(path ${ARGN})
    get_filename_component(file ${path} NAME)
    list(APPEND copies ${example_root}/${folder}/${file})
    list(APPEND originals ${CMAKE_SOURCE_DIR}/${path})
  endforeach()
  list(JOIN ARGN "," files)
  add_custom_command(OUTPUT ${copies}
    COMMAND ${CMAKE_COMMAND} -DDOCUMENT=${document} "-DSECTION=${section}"
      -DROOT=${CMAKE_SOURCE_DIR} -DFILES=${files} -DNEW= -DINTO=${example_root}/${folder} -P ${script}
    DEPENDS ${document} ${script} ${originals}
    COMMENT "Adding the example ${name} of docs/architecture.md" VERBATIM)
  target_sources(test-documents PRIVATE ${copies})
endfunction()
foreach(room window tree)
  file(GLOB ${room}_files RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS
    ${CMAKE_SOURCE_DIR}/structure-editor/${room}/*.cpp ${CMAKE_SOURCE_DIR}/structure-editor/${room}/*.h)
endforeach()
add_example("Adding a command" window command ${window_files}
  tests/support/plain/PlainMenus.cpp tests/support/plain/PlainCommands.cpp)
add_example("Adding a column" tree column ${tree_files} tests/structure-editor/TreeViewTest.cpp)

target_sources(test-documents PRIVATE
  "$<FILTER:$<TARGET_OBJECTS:structure-editor>,EXCLUDE,/(window|tree)/[A-Za-z]+[.]cpp|/mocs_compilation>"
  structure-editor/WindowTools.cpp structure-editor/CommandTools.cpp)
# The tests of all commands and of all columns, and random sessions, as they are.
target_sources(test-documents PRIVATE
  structure-editor/MenuTest.cpp structure-editor/AllSlotsTest.cpp structure-editor/RepaintTest.cpp
  structure-editor/SlotTools.cpp structure-editor/RepaintCount.cpp structure-editor/CompareRows.cpp
  structure-editor/TreeItemTest.cpp structure-editor/TreeLookTest.cpp
  random-use/CommandUseTest.cpp random-use/SessionsTest.cpp random-use/Sessions.cpp
  random-use/Apart.cpp random-use/Compare.cpp random-use/Driver.cpp random-use/DriverGestures.cpp
  random-use/DriverSaving.cpp random-use/SavedBonds.cpp random-use/SavedRows.cpp random-use/OtherUsers.cpp)
target_compile_definitions(test-documents PRIVATE
  TEST_PLUGINS="${TEST_PLUGINS}" RECORDING_PLUGINS="${EDITOR_TEST_PLUGINS}/recording")
target_link_libraries(test-documents PRIVATE workbench-parts host-twin gemmi-reading)
# The precompiled header of the tests is without the network.
target_compile_options(test-documents PRIVATE -UQT_NETWORK_LIB)
target_link_options(test-documents PRIVATE -Wl,--wrap=_ZN8TreeView13triggerUpdateEv)
add_dependencies(test-documents
  test-plugin-Good editor-test-plugin-SolidVolume editor-test-plugin-Electrostatics)
foreach(class MenuTest AllSlotsTest RepaintTest TreeViewTest TreeItemTest TreeLookTest CommandUseTest
    SessionsTest)
  add_test_class(documents ${class})
endforeach()
target_include_directories(test-documents BEFORE PRIVATE ${example_root})
target_include_directories(test-documents PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/support/plain
  ${CMAKE_CURRENT_SOURCE_DIR}/structure-editor ${CMAKE_SOURCE_DIR}/structure-editor)
target_link_libraries(test-documents PRIVATE Qt6::Core5Compat)

# The host with the format that the document adds to it as an example, under the name of the usual one:
# ExampleFormatTest runs with it in its place.
set(format_root ${CMAKE_CURRENT_BINARY_DIR}/example/memory-host)
set(format_table memory-host/files/Formats.cpp)
set(format_reader memory-host/files/ReadXyz.cpp)
add_custom_command(OUTPUT ${format_root}/Formats.cpp ${format_root}/ReadXyz.cpp
  COMMAND ${CMAKE_COMMAND} -DDOCUMENT=${document} "-DSECTION=Adding a format"
    -DROOT=${CMAKE_SOURCE_DIR} -DFILES=${format_table} -DNEW=${format_reader}
    -DINTO=${format_root} -P ${script}
  DEPENDS ${document} ${script} ${CMAKE_SOURCE_DIR}/${format_table}
  COMMENT "Adding the example format of docs/architecture.md" VERBATIM)
add_library(ExampleHost SHARED
  ${format_root}/Formats.cpp ${format_root}/ReadXyz.cpp
  $<FILTER:$<TARGET_OBJECTS:MemoryHost>,EXCLUDE,/Formats\\.cpp>)
set_target_properties(ExampleHost PROPERTIES
  OUTPUT_NAME MemoryHost
  LIBRARY_OUTPUT_DIRECTORY ${format_root}
  AUTOMOC OFF)
target_include_directories(ExampleHost PRIVATE
  ${CMAKE_SOURCE_DIR}/memory-host/files ${CMAKE_SOURCE_DIR}/memory-host)
target_link_libraries(ExampleHost PRIVATE host ZLIB::ZLIB Threads::Threads)
target_compile_options(ExampleHost PRIVATE -O0)
add_dependencies(test-documents ExampleHost)
set_property(TEST documents.ExampleFormatTest
  APPEND PROPERTY ENVIRONMENT LD_LIBRARY_PATH=${format_root})

# The plug-ins that the document makes, in folders as the host finds them.
set(example_plugins ${CMAKE_CURRENT_BINARY_DIR}/example-plugins)
function(add_example_plugin type name section)
  set(source ${example_plugins}/${name}.cpp)
  add_custom_command(OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DDOCUMENT=${document} "-DSECTION=${section}" -DROOT=${CMAKE_SOURCE_DIR}
      -DFILES= -DNEW=${name}.cpp -DINTO=${example_plugins} -P ${script}
    DEPENDS ${document} ${script}
    COMMENT "Making the example plug-in ${name} of docs/architecture.md" VERBATIM)
  add_library(example-plugin-${name} MODULE ${source})
  target_link_libraries(example-plugin-${name} PRIVATE plugin-frame)
  set_target_properties(example-plugin-${name} PROPERTIES
    OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY ${example_plugins}/${type})
  add_dependencies(test-documents example-plugin-${name})
endfunction()
add_example_plugin(View Counter "Adding a plug-in with a window")
add_example_plugin(Modify Hydrogens "Adding a plug-in without a window")
target_compile_definitions(test-documents PRIVATE EXAMPLE_PLUGINS="${example_plugins}")

target_compile_definitions(test-documents PRIVATE CMAKE="${CMAKE_COMMAND}")

add_custom_target(check-documents ALL
  COMMAND ${CMAKE_COMMAND} -DDOCUMENT=${document} -DROOT=${CMAKE_SOURCE_DIR}
    -P ${CMAKE_CURRENT_SOURCE_DIR}/documents/CheckNames.cmake
  COMMENT "Checking the names in docs/architecture.md")
