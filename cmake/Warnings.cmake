# Warnings are errors in spirit: the build must stay clean with these on.
add_compile_options(-Wall -Wextra
  # Entry log lines carry an empty message by design.
  -Wno-format-zero-length)
option(INTERTITLE_WERROR "Treat warnings as errors" OFF)
if(INTERTITLE_WERROR)
  add_compile_options(-Werror)
endif()
