add_executable(manager_test
    ConnectionTest.cpp
    EventsTest.cpp
    ManagerFixture.cpp
    MethodsTest.cpp
    NamesAndEventsTest.cpp
    PlaybackTest.cpp)
target_link_libraries(manager_test PRIVATE ipod_service_core GTest::gmock_main)
gtest_discover_tests(manager_test DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60)
