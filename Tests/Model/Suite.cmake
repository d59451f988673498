intertitle_test(test_model DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_parser)
