# libFuzzer build: -DINTERTITLE_FUZZ=ON with clang (CC=clang CXX=clang++).
# Everything is compiled with coverage for the fuzzer plus address and
# undefined-behaviour checks, including those gcc's sanitizer lacks (enum
# loads, implicit integer truncation, local bounds). Any report aborts, so a
# fuzz run or a test run in this tree stops at the first fault.
option(INTERTITLE_FUZZ "Build the libFuzzer targets in Fuzz/ (clang only)" OFF)
if(INTERTITLE_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang" OR NOT CMAKE_C_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "INTERTITLE_FUZZ needs clang: configure with CC=clang CXX=clang++")
  endif()
  if(NOT INTERTITLE_SANITIZE STREQUAL "")
    message(FATAL_ERROR "INTERTITLE_FUZZ brings its own sanitizers; leave INTERTITLE_SANITIZE empty")
  endif()
  set(INTERTITLE_FUZZ_SANITIZERS
      address,undefined,enum,float-divide-by-zero,implicit-integer-truncation,local-bounds)
  add_compile_options(-fsanitize=fuzzer-no-link,${INTERTITLE_FUZZ_SANITIZERS}
                      -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${INTERTITLE_FUZZ_SANITIZERS})
  message(STATUS "Fuzz build: clang, ${INTERTITLE_FUZZ_SANITIZERS}")
endif()
