intertitle_test(test_imsc DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_parser)
