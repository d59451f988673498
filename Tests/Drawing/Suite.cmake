intertitle_test(test_drawing DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_graphics ttml_image EFL)
# Markup attributes are keyed by the parser's attribute numbers (header only).
if(TARGET test_drawing)
  target_include_directories(test_drawing PRIVATE ${CMAKE_SOURCE_DIR}/Core/Parser/Profile/Inc)
endif()
