intertitle_test(test_vconf DIR ${CMAKE_CURRENT_LIST_DIR} LINKS vconf EFL)
# Changes from another process are made with the built vconftool.
if(TARGET test_vconf AND TARGET vconftool)
  add_dependencies(test_vconf vconftool)
  target_compile_definitions(test_vconf PRIVATE INTERTITLE_VCONFTOOL="$<TARGET_FILE:vconftool>")
endif()
