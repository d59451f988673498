intertitle_test(test_xmlparser DIR ${CMAKE_CURRENT_LIST_DIR} LINKS ttml_xmlparser)
