if(WIN32)
  add_executable(launched_app launched_app.cpp)
  target_link_libraries(launched_app PRIVATE orvane_warnings)

  # The registry value and the application's mutex exist once per machine.
  orvane_test(NAME launcher_tests SERIAL
    SOURCES installed_app.cpp launcher_tests.cpp
    LIBRARIES orvane_launcher
    DEPENDS launched_app)
endif()
