orvane_test(NAME plugin_events_tests
  SOURCES linked_plugin.cpp player_events_tests.cpp send_to_tests.cpp
  LIBRARIES orvane_plugin orvane_standin_player
  SERIAL)
