intertitle_test(test_menu DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_controller ttml_tvservice EFL)
# Key changes from another process are made with the built vconftool.
if(TARGET test_menu AND TARGET vconftool)
  add_dependencies(test_menu vconftool)
  target_compile_definitions(test_menu PRIVATE INTERTITLE_VCONFTOOL="$<TARGET_FILE:vconftool>")
endif()
