intertitle_test(test_engine DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_controller ttml_source EFL)
# The timing tool's argument checks run the built ttml-timing.
if(TARGET test_engine AND TARGET ttml-timing)
  add_dependencies(test_engine ttml-timing)
  target_compile_definitions(test_engine PRIVATE INTERTITLE_TTML_TIMING="$<TARGET_FILE:ttml-timing>")
endif()
