# orvane_library(name [SMALL] sources...)
#
# One of our own static libraries: warnings on, headers found from the top folder.
# SMALL: the module takes room in the player's address space, so it is optimised for size. Not for
# messages, link and log, where that would cost time.
function(orvane_library name)
  cmake_parse_arguments(arg "SMALL" "" "" ${ARGN})
  add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE orvane_warnings)
  if(arg_SMALL AND WIN32)
    target_compile_options(${name} PRIVATE -Os)
  endif()
endfunction()
