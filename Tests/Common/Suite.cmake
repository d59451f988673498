intertitle_test(test_common DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_common)
