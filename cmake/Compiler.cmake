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
