intertitle_test(test_controller DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_controller ttml_source EFL)
