intertitle_test(test_engine DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_controller EFL)
