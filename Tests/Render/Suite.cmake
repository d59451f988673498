intertitle_test(test_render DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_controller ttml_graphics ttml_image ttml_source EFL)
if(TARGET test_render)
  # Side-by-side pictures of our drawing and the reference suites' renderings.
  target_compile_definitions(test_render PRIVATE INTERTITLE_GALLERY="${CMAKE_BINARY_DIR}/render-gallery")
  if(TARGET ttml-render)
    add_dependencies(test_render ttml-render)
    target_compile_definitions(test_render PRIVATE INTERTITLE_TTML_RENDER="$<TARGET_FILE:ttml-render>")
  endif()
endif()
