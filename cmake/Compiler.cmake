# Warnings are errors; sanitizers on demand.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Werror)
# Single-precision results are what the source says, on every processor.
add_compile_options(-ffp-contract=off)
# QString and friends go through named conversions: Latin-1 and UTF-8 are never mixed up in silence.
add_compile_definitions(QT_NO_CAST_TO_ASCII)

if(SANITIZE)
  # What the sanitizers add to the code misleads the compiler's own look for such mistakes.
  add_compile_options(-Wno-array-bounds -Wno-maybe-uninitialized -Wno-stringop-overflow)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

if(BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    message(FATAL_ERROR "BUILD_FUZZERS needs Clang: -DCMAKE_CXX_COMPILER=clang++")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
    -fno-omit-frame-pointer -fsized-deallocation)
  # What g++ defines by itself.
  add_compile_definitions(__SANITIZE_ADDRESS__=1)
  add_link_options(-fsanitize=address,undefined)
endif()
