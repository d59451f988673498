intertitle_test(test_graphics DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_graphics EFL)
