intertitle_test(test_image DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_image)
