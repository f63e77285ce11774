add_executable(browse_test
    BrowseMethodsTest.cpp
    BrowseModelTest.cpp
    BrowsePagingTest.cpp
    BrowseTextTest.cpp
    LetterJumpTest.cpp
    ManagerFixture.cpp)
target_link_libraries(browse_test PRIVATE ipod_service_core GTest::gmock_main)
gtest_discover_tests(browse_test DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60)
