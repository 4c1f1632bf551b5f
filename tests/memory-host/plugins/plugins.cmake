# Small plug-ins that the plug-in manager's tests load, one for each thing that can be wrong.
set(TEST_PLUGINS ${CMAKE_CURRENT_BINARY_DIR}/plugins)

function(add_test_plugin name source)
  set(target test-plugin-${name})
  add_library(${target} MODULE memory-host/plugins/${source})
  # As for every plug-in, the host's symbols are resolved when the host loads it.
  target_link_libraries(${target} PRIVATE plugin-frame)
  target_compile_definitions(${target} PRIVATE ${ARGN})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY ${TEST_PLUGINS})
  add_dependencies(test-memory-host ${target})
endfunction()

add_test_plugin(Good TestPlugin.cpp)
add_test_plugin(Other TestPlugin.cpp)
add_test_plugin(LacksIsDone TestPlugin.cpp LACKS_ISDONE)
add_test_plugin(LacksSymbol TestPlugin.cpp LACKS_SYMBOL)
add_test_plugin(ThrowsStatic TestPlugin.cpp THROWS_STATIC)
foreach(entry Command CommandC Execute0 IsDone Cleanup)
  add_test_plugin(Throws${entry} TestPlugin.cpp THROWS_IN="${entry}")
endforeach()
add_test_plugin(Rotamer RotamerPlugin.cpp)
add_test_plugin(Window WindowPlugin.cpp)
add_test_plugin(Leaving LeavingPlugin.cpp)
add_test_plugin(LeavingLater LeavingPlugin.cpp DELETES_LATER)
add_test_plugin(Subscribing SubscribingPlugin.cpp)
add_test_plugin(SubscribingStatic SubscribingPlugin.cpp IS_STATIC)
add_test_plugin(SubscribingUnusable SubscribingPlugin.cpp LACKS_CLEANUP)
add_test_plugin(Observing SubscribingPlugin.cpp IS_OBSERVER)
add_test_plugin(Following SubscribingPlugin.cpp IS_FOLLOWER)
add_test_plugin(Reading SubscribingPlugin.cpp IS_READER)

target_compile_definitions(test-memory-host PRIVATE TEST_PLUGINS="${TEST_PLUGINS}")
