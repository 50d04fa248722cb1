# What the project takes from elsewhere; docs/dependencies.md says why each is there.
#
# juce      Debian's juce-modules-source (7.0.5), juce_core, 16-bit strings
# pugixml   Debian's source package, unpacked by ./dev setup into build/deps/pugixml
# gtest     Debian's googletest sources

set(ORVANE_DEPS ${CMAKE_SOURCE_DIR}/build/deps CACHE PATH "Where ./dev setup unpacks dependencies")
# Wherever they are, the module's debug information names them alike.
add_compile_options(-ffile-prefix-map=${ORVANE_DEPS}=./build/deps)
set(JUCE_MODULES /usr/share/juce/modules CACHE PATH "JUCE's module sources")
set(GTEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest's sources")

foreach(needed IN ITEMS ${JUCE_MODULES}/juce_core/juce_core.cpp
                        ${ORVANE_DEPS}/pugixml/src/pugixml.cpp
                        ${GTEST_SOURCES}/CMakeLists.txt)
  if(NOT EXISTS ${needed})
    message(FATAL_ERROR "${needed} is missing: run ./dev setup")
  endif()
endforeach()

add_library(pugixml STATIC ${ORVANE_DEPS}/pugixml/src/pugixml.cpp)
target_include_directories(pugixml SYSTEM PUBLIC ${ORVANE_DEPS}/pugixml/src)
target_compile_definitions(pugixml PUBLIC PUGIXML_COMPACT PUGIXML_NO_XPATH PUGIXML_NO_STL PUGIXML_NO_EXCEPTIONS)
# It throws nothing and calls nothing that does. Without unwind tables, which keep a function from
# --gc-sections, what nobody calls of it is left out of the module.
target_compile_options(pugixml PRIVATE -fno-exceptions -fno-unwind-tables -fno-asynchronous-unwind-tables)

set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${GTEST_SOURCES} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
foreach(library gtest gmock)
  target_compile_options(${library} PRIVATE -O0 -g1) # it costs more to build than to run
endforeach()
