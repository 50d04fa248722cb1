# Warnings are errors in our own code; what we only build (JUCE, pugixml, GoogleTest)
# comes in as system headers and without this target. No COM interface has a virtual destructor; that
# nothing is deleted through one is what -Wall looks at (-Wdelete-non-virtual-dtor).
add_library(orvane_warnings INTERFACE)
target_compile_options(orvane_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Woverloaded-virtual
  -Wold-style-cast -Wunused -Wformat=2 -Wno-format-nonliteral -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(orvane_warnings INTERFACE -Wduplicated-cond -Wlogical-op)
endif()

option(ORVANE_SANITIZE "Address and undefined-behaviour sanitizers (native builds)" OFF)
if(ORVANE_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  add_compile_definitions(ORVANE_SANITIZED)
endif()
