# Headers that most sources include, compiled once for many targets. A source includes what it needs
# all the same: -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON builds without.

# precompile(NAME HEADER LIBRARY...): compiles a header with the flags that these libraries give.
function(precompile name header)
  set(empty ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  file(CONFIGURE OUTPUT ${empty} CONTENT "")
  add_library(${name} OBJECT ${empty})
  set_target_properties(${name} PROPERTIES AUTOMOC OFF)
  target_link_libraries(${name} PRIVATE ${ARGN})
  target_precompile_headers(${name} PRIVATE ${header})
endfunction()

# use_precompiled(TARGET NAME): the target may have more definitions than the header was compiled
# with, but no other flags.
function(use_precompiled target name)
  target_precompile_headers(${target} REUSE_FROM ${name})
  # So ccache finds which precompiled header it is.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endfunction()
