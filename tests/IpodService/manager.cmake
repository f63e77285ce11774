add_library(manager_fixture STATIC ManagerFixture.cpp)
target_link_libraries(manager_fixture PUBLIC ipod_service_core GTest::gmock)

add_executable(manager_test
    ConnectionTest.cpp
    EventsTest.cpp
    MethodsTest.cpp
    NamesAndEventsTest.cpp
    PlaybackTest.cpp)
target_link_libraries(manager_test PRIVATE manager_fixture GTest::gmock_main)
gtest_discover_tests(manager_test DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60)
