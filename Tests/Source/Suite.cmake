intertitle_test(test_source DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_source)
