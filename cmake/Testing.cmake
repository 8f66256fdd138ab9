# Test registration for both builds.
#
# Natively every GoogleTest case becomes its own ctest test.  In the Windows
# build each test program is one ctest test run through build/winrun, which
# brings the Wine test bed up (once) and runs the program under wine.
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)

if(WIN32)
  configure_file(${CMAKE_SOURCE_DIR}/scripts/winrun.in ${CMAKE_BINARY_DIR}/winrun @ONLY
                 FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  set(VANTR_WINRUN ${CMAKE_BINARY_DIR}/winrun)
endif()

# Helpers every test program may use.
if(WIN32)
  add_library(vantr_test_support STATIC ${CMAKE_SOURCE_DIR}/tests/test_support/child_process_win.cpp)
else()
  add_library(vantr_test_support STATIC ${CMAKE_SOURCE_DIR}/tests/test_support/child_process_posix.cpp)
endif()
target_include_directories(vantr_test_support PUBLIC ${VANTR_TEST_INCLUDE})
target_link_libraries(vantr_test_support PUBLIC vantr_core)

# vantr_test(NAME name SOURCES ... [LIBS ...] [WINDOWS_ONLY] [TIMEOUT s])
# vantr_windows_run(NAME name PROGRAM target ARGS ... TIMEOUT s): one more
# ctest test that runs a Windows test program with arguments (a gtest filter).
function(vantr_test)
  cmake_parse_arguments(T "WINDOWS_ONLY" "NAME;TIMEOUT" "SOURCES;LIBS;ARGS" ${ARGN})
  if(T_WINDOWS_ONLY AND NOT WIN32)
    return()
  endif()
  if(NOT T_TIMEOUT)
    set(T_TIMEOUT 120)
  endif()
  add_executable(${T_NAME} ${T_SOURCES})
  target_compile_options(${T_NAME} PRIVATE ${VANTR_WARNINGS})
  target_include_directories(${T_NAME} PRIVATE ${VANTR_TEST_INCLUDE})
  target_link_libraries(${T_NAME} PRIVATE vantr_core vantr_test_support GTest::gtest_main ${T_LIBS})
  if(WIN32)
    target_link_options(${T_NAME} PRIVATE -static)
    add_test(NAME ${T_NAME} COMMAND ${VANTR_WINRUN} $<TARGET_FILE:${T_NAME}> ${T_ARGS})
    set_tests_properties(${T_NAME} PROPERTIES TIMEOUT ${T_TIMEOUT}
      FAIL_REGULAR_EXPRESSION "Unhandled (exception|page fault)|\\[  FAILED  \\]"
      WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  else()
    gtest_discover_tests(${T_NAME} PROPERTIES TIMEOUT ${T_TIMEOUT}
      WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
  endif()
endfunction()

function(vantr_windows_run)
  cmake_parse_arguments(R "" "NAME;PROGRAM;TIMEOUT" "ARGS" ${ARGN})
  if(NOT WIN32)
    return()
  endif()
  add_test(NAME ${R_NAME} COMMAND ${VANTR_WINRUN} $<TARGET_FILE:${R_PROGRAM}> ${R_ARGS})
  set_tests_properties(${R_NAME} PROPERTIES TIMEOUT ${R_TIMEOUT}
    FAIL_REGULAR_EXPRESSION "Unhandled (exception|page fault)|\\[  FAILED  \\]"
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR})
endfunction()
