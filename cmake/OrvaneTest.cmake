# orvane_test(NAME name SOURCES ... [LIBRARIES ...] [SERIAL] [BETWEEN_PROCESSES]
#             [ENVIRONMENT ...] [DEPENDS targets] [KIT ...])
#
# One GoogleTest program, one ctest entry. It runs through scripts/run-test.sh, which fails a
# program that ran no test: Wine exits with 0 when it cannot start a 32-bit program at all.
# SERIAL: the test uses names that exist once per machine (the pipes, the application's mutex,
# the shared log, the registry) and shares them with no other test.
# BETWEEN_PROCESSES: the test measures time between processes; ./dev test may try it a second time.
# KIT: what check.exe has to know of it on a real Windows (packaging/check):
#   rights              it writes where only an administrator may
#   no-runtime          it is for a Windows without the Format runtime
#   without=FILTER      tests that a user's own machine is spared
function(orvane_test)
  cmake_parse_arguments(arg "SERIAL;BETWEEN_PROCESSES" "NAME" "SOURCES;LIBRARIES;ENVIRONMENT;DEPENDS;KIT" ${ARGN})
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
  if(wmvcore IN_LIST arg_DEPENDS)
    list(APPEND arg_KIT runtime)
  endif()
  if(arg_BETWEEN_PROCESSES)
    list(APPEND arg_KIT time)
  endif()
  list(JOIN arg_KIT " " needs)
  set_property(GLOBAL APPEND PROPERTY ORVANE_KIT_TESTS "${arg_NAME} ${needs}")
  set_property(GLOBAL APPEND PROPERTY ORVANE_KIT_TARGETS ${arg_NAME} ${arg_DEPENDS})
  if(arg_SERIAL)
    set_tests_properties(${arg_NAME} PROPERTIES RESOURCE_LOCK machine)
  endif()
endfunction()
