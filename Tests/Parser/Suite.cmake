intertitle_test(test_parser DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_parser)
# The tool test runs the built ttml-dump on the bundled sample.
if(TARGET test_parser AND TARGET ttml-dump)
  add_dependencies(test_parser ttml-dump)
  target_compile_definitions(test_parser PRIVATE INTERTITLE_TTML_DUMP="$<TARGET_FILE:ttml-dump>")
endif()
