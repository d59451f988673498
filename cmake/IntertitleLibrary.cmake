# intertitle_area_library(NAME DIRS <folders with Src/*.cpp> INCLUDES <folders> LINKS <targets>)
# One static library per area; sources are the .cpp files of each folder's Src.
function(intertitle_area_library name)
  cmake_parse_arguments(A "" "" "DIRS;INCLUDES;LINKS" ${ARGN})
  set(sources)
  foreach(d ${A_DIRS})
    file(GLOB s CONFIGURE_DEPENDS "${d}/Src/*.cpp" "${d}/Src/*.c")
    list(APPEND sources ${s})
  endforeach()
  if(sources)
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${A_INCLUDES})
    target_link_libraries(${name} PUBLIC ${A_LINKS})
  else()
    # Headers only so far: dependants still get the include paths.
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${A_INCLUDES})
    target_link_libraries(${name} INTERFACE ${A_LINKS})
  endif()
endfunction()

# intertitle_test(NAME DIR <folder of *.cpp> LINKS <targets> [EFL])
# One GoogleTest program per folder; every test case is registered with CTest.
# EFL: the program brings up EFL, whose own leaks LeakSanitizer is told about.
function(intertitle_test name)
  cmake_parse_arguments(A "EFL" "DIR" "LINKS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS "${A_DIR}/*.cpp")
  if(NOT sources)
    return()
  endif()
  if(A_EFL)
    list(APPEND sources ${CMAKE_SOURCE_DIR}/Tests/Support/EflLeakSuppressions.cpp)
  endif()
  # A key store of the process's own (VCONF_ROOT in a fresh temporary folder).
  list(APPEND sources ${CMAKE_SOURCE_DIR}/Tests/Support/VconfRoot.cpp)
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${A_LINKS} intertitle_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  target_compile_definitions(${name} PRIVATE
    INTERTITLE_TESTDATA="${INTERTITLE_TESTDATA}"
    INTERTITLE_SOURCE_DIR="${CMAKE_SOURCE_DIR}")
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES ENVIRONMENT "ECORE_NO_SYSTEM_MODULES=1;INTERTITLE_LOG=error")
endfunction()
