# Warnings are errors; sanitizers on demand.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
# No fused multiply-add: single-precision results are the same on every processor.
add_compile_options(-ffp-contract=off)
# Line numbers and no variables: with them, which a debugger can show, compiling takes a fifth longer.
add_compile_options($<$<CONFIG:RelWithDebInfo>:-g1>)
# QString converts through named functions only, so that Latin-1 and UTF-8 are never confused.
add_compile_definitions(QT_NO_CAST_TO_ASCII)

# With a precompiled header ccache cannot know the macros and dates in it.
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$")
  set(CMAKE_CXX_COMPILER_LAUNCHER
    env CCACHE_SLOPPINESS=pch_defines,time_macros ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()

if(SANITIZE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # With the sanitizers' instrumentation these warnings have false positives.
    add_compile_options(-Wno-array-bounds -Wno-maybe-uninitialized -Wno-stringop-overflow)
  else()
    # g++ defines it by itself.
    add_compile_definitions(__SANITIZE_ADDRESS__=1)
  endif()
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

if(BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    message(FATAL_ERROR "BUILD_FUZZERS needs Clang: -DCMAKE_CXX_COMPILER=clang++")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link -fsized-deallocation)
endif()
