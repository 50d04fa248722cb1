# orvane_strip(target)
#
# What is built is what ships: after the link the debug information moves into a file beside the
# module (NAME.debug) that debuggers and addr2line find through the module's debug link. Loaded, the
# module would otherwise take seven times the space in the player's 32-bit address space.
function(orvane_strip target)
  if(NOT WIN32)
    return()
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
    COMMAND ${CMAKE_OBJCOPY} --strip-unneeded --add-gnu-debuglink=$<TARGET_FILE:${target}>.debug
            $<TARGET_FILE:${target}>
    COMMAND_EXPAND_LISTS VERBATIM)
endfunction()
