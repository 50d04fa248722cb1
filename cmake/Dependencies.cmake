# What the project takes from elsewhere; docs/dependencies.md says why each is there.
#
# juce, pugixml, zlib   pinned sources, unpacked by ./dev setup into build/deps
# gtest                 Debian's googletest sources

set(ORVANE_DEPS ${CMAKE_SOURCE_DIR}/build/deps CACHE PATH "Where ./dev setup unpacks dependencies")
# Wherever they are, the module's debug information names them alike.
add_compile_options(-ffile-prefix-map=${ORVANE_DEPS}=./build/deps)
set(JUCE_MODULES ${ORVANE_DEPS}/juce/modules)
set(GTEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest's sources")

foreach(needed IN ITEMS ${JUCE_MODULES}/juce_core/juce_core.cpp
                        ${ORVANE_DEPS}/pugixml/src/pugixml.cpp
                        ${ORVANE_DEPS}/zlib/zlib.h
                        ${GTEST_SOURCES}/CMakeLists.txt)
  if(NOT EXISTS ${needed})
    message(FATAL_ERROR "${needed} is missing: run ./dev setup")
  endif()
endforeach()

add_library(pugixml STATIC ${ORVANE_DEPS}/pugixml/src/pugixml.cpp)
target_include_directories(pugixml SYSTEM PUBLIC ${ORVANE_DEPS}/pugixml/src)
target_compile_definitions(pugixml PUBLIC PUGIXML_COMPACT PUGIXML_NO_XPATH PUGIXML_NO_STL PUGIXML_NO_EXCEPTIONS)

# What juce_core refers to.
set(zlib_sources adler32 crc32 deflate inffast inflate inftrees trees zutil)
list(TRANSFORM zlib_sources REPLACE "(.+)" "${ORVANE_DEPS}/zlib/\\1.c")
add_library(zlib STATIC ${zlib_sources})
target_include_directories(zlib SYSTEM PUBLIC ${ORVANE_DEPS}/zlib)
target_compile_options(zlib PRIVATE -w -Os)

# Neither throws nor calls what does. Without unwind tables, which keep a function from --gc-sections,
# what nobody calls is left out of the module.
foreach(library pugixml zlib)
  target_compile_options(${library} PRIVATE -fno-exceptions -fno-unwind-tables -fno-asynchronous-unwind-tables)
endforeach()

set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${GTEST_SOURCES} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
foreach(library gtest gmock)
  target_compile_options(${library} PRIVATE -O0 -g1) # it costs more to build than to run
endforeach()
