# orvane_test(NAME name SOURCES ... [LIBRARIES ...] [SERIAL] [BETWEEN_PROCESSES]
#             [ENVIRONMENT ...] [DEPENDS targets])
#
# One GoogleTest program, one ctest entry. It runs through scripts/run-test.sh, which fails a
# program that ran no test: Wine exits with 0 when it cannot start a 32-bit program at all.
# SERIAL: the test uses names that exist once per machine (the pipes, the application's mutex,
# the shared log, the registry) and shares them with no other test.
# BETWEEN_PROCESSES: the test measures time between processes; ./dev test may try it a second time.
# A new test program also needs its line in check/kit.txt.
function(orvane_test)
  cmake_parse_arguments(arg "SERIAL;BETWEEN_PROCESSES" "NAME" "SOURCES;LIBRARIES;ENVIRONMENT;DEPENDS" ${ARGN})
  add_executable(${arg_NAME} ${arg_SOURCES})
  target_include_directories(${arg_NAME} PRIVATE ${CMAKE_SOURCE_DIR})
  target_link_libraries(${arg_NAME} PRIVATE ${arg_LIBRARIES} orvane_test_support orvane_warnings)
  if(arg_DEPENDS)
    add_dependencies(${arg_NAME} ${arg_DEPENDS})
  endif()
  add_test(NAME ${arg_NAME}
    COMMAND ${CMAKE_SOURCE_DIR}/scripts/run-test.sh $<TARGET_FILE:${arg_NAME}>
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
  set_tests_properties(${arg_NAME} PROPERTIES TIMEOUT 150 ENVIRONMENT "${arg_ENVIRONMENT}")
  if(arg_BETWEEN_PROCESSES)
    set_tests_properties(${arg_NAME} PROPERTIES LABELS between-processes)
  endif()
  if(arg_SERIAL)
    set_tests_properties(${arg_NAME} PROPERTIES RESOURCE_LOCK machine)
  endif()
endfunction()
