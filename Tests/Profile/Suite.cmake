intertitle_test(test_profile DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_parser)
