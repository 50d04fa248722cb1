# orvane_launcher: finds, detects and starts the desktop application.
if(WIN32)
  orvane_library(orvane_launcher
    app_launcher.cpp
    host_launcher.cpp
    orvane_launcher.cpp
    program_start.cpp)
  target_link_libraries(orvane_launcher PUBLIC orvane_common orvane_util juce shell32)
endif()
