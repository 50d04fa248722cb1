# What the project takes from elsewhere; docs/dependencies.md says why each is there.
#
# juce      Debian's juce-modules-source (7.0.5), juce_core and juce_events, 16-bit strings
# pugixml   Debian's source package, unpacked by ./dev setup into build/deps/pugixml
# gtest     Debian's googletest sources

set(ORVANE_DEPS ${CMAKE_SOURCE_DIR}/build/deps CACHE PATH "Where ./dev setup unpacks dependencies")
set(JUCE_MODULES /usr/share/juce/modules CACHE PATH "JUCE's module sources")
set(GTEST_SOURCES /usr/src/googletest CACHE PATH "GoogleTest's sources")

foreach(needed IN ITEMS ${JUCE_MODULES}/juce_core/juce_core.cpp
                        ${ORVANE_DEPS}/pugixml/src/pugixml.cpp
                        ${GTEST_SOURCES}/CMakeLists.txt)
  if(NOT EXISTS ${needed})
    message(FATAL_ERROR "${needed} is missing: run ./dev setup")
  endif()
endforeach()

add_library(juce STATIC
  ${JUCE_MODULES}/juce_core/juce_core.cpp
  ${JUCE_MODULES}/juce_events/juce_events.cpp)
target_include_directories(juce SYSTEM PUBLIC ${JUCE_MODULES})
target_compile_definitions(juce PUBLIC
  JUCE_GLOBAL_MODULE_SETTINGS_INCLUDED=1
  JUCE_STANDALONE_APPLICATION=0
  JUCE_MODULE_AVAILABLE_juce_core=1
  JUCE_MODULE_AVAILABLE_juce_events=1
  JUCE_STRING_UTF_TYPE=16
  JUCE_USE_CURL=0)
target_compile_options(juce PRIVATE -w)
if(WIN32)
  target_compile_definitions(juce PUBLIC $<IF:$<CONFIG:Debug>,DEBUG=1,NDEBUG=1>)
  # Threads that JUCE starts hold the module they run in; see the header.
  target_compile_options(juce PRIVATE -include ${CMAKE_SOURCE_DIR}/platform/juce_thread_module_ref.h)
  # mingw has no static zlib of its own in the default search path of every distribution: name it.
  target_compile_definitions(juce PRIVATE JUCE_INCLUDE_ZLIB_CODE=0)
  target_link_libraries(juce PUBLIC z ole32 oleaut32 uuid version ws2_32 wininet shlwapi winmm
                                    user32 gdi32 advapi32 shell32)
else()
  target_compile_definitions(juce PUBLIC $<IF:$<CONFIG:Debug>,DEBUG=1,NDEBUG=1>)
  target_compile_definitions(juce PRIVATE JUCE_INCLUDE_ZLIB_CODE=0)
  find_package(Threads REQUIRED)
  target_link_libraries(juce PUBLIC z Threads::Threads ${CMAKE_DL_LIBS})
endif()

add_library(pugixml STATIC ${ORVANE_DEPS}/pugixml/src/pugixml.cpp)
target_include_directories(pugixml SYSTEM PUBLIC ${ORVANE_DEPS}/pugixml/src)
target_compile_definitions(pugixml PUBLIC PUGIXML_NO_XPATH PUGIXML_NO_STL PUGIXML_NO_EXCEPTIONS)

set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory(${GTEST_SOURCES} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
