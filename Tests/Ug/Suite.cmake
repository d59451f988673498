intertitle_test(test_ug DIR ${CMAKE_CURRENT_LIST_DIR}
  LINKS ttml_graphics ui-gadget app_control dlog ${CMAKE_DL_LIBS} EFL)
# The tests load the module itself, as the gadget framework does.
if(TARGET test_ug)
  add_dependencies(test_ug ug-intertitle ug-host)
  target_compile_definitions(test_ug PRIVATE
    INTERTITLE_UG_MODULE="$<TARGET_FILE:ug-intertitle>" INTERTITLE_UG_HOST="$<TARGET_FILE:ug-host>")
endif()
