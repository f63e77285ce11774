#include "ServiceUtil/ListenerList.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

struct Listener {};

TEST(ListenerListTest, CallsInOrderOfTheLastAddAndLeavesOutWhoIsRemovedMeanwhile) {
    ListenerList<Listener> list;
    Listener a;
    Listener b;
    Listener c;
    for (Listener* listener : {&a, &b, &c, &a}) {
        list.Add(listener);
    }
    std::vector<const Listener*> called;
    const auto note = [&](const Listener& listener) { called.push_back(&listener); };
    list.ForEach([&](Listener& listener) {
        note(listener);
        list.Remove(&b);  // itself, and before
        list.Remove(&c);  // not called any more
    });
    list.ForEach(note);
    EXPECT_EQ(called, (std::vector<const Listener*>{&b, &a, &a}));
}

TEST(ListenerListTest, RemoveWaitsForCallsOfThatListenerOnOtherThreads) {
    for (int round = 0; round < 200; ++round) {
        ListenerList<Listener> list;
        Listener removed;
        Listener other;
        list.Add(&removed);
        std::latch inside(1);
        std::atomic<bool> ended{false};
        std::thread caller([&] {
            list.ForEach([&](Listener&) {
                list.ForEach([](Listener&) {});  // a call within the call ends, this one goes on
                inside.count_down();
                for (int turns = 0; turns < round; ++turns) {
                    std::this_thread::yield();
                }
                ended = true;
            });
        });
        inside.wait();
        list.Add(&other);
        list.Remove(&removed);
        EXPECT_TRUE(ended);
        list.ForEach([&](const Listener& listener) { EXPECT_EQ(&listener, &other); });
        // From inside a call: neither that one nor those of others are waited for.
        list.ForEach([&](Listener&) { list.Remove(&other); });
        caller.join();
    }
}

TEST(ListenerListTest, RemoveDoesNotWaitForOtherListenersNorForCallsThatRemoveTheSame) {
    ListenerList<Listener> list;
    Listener twice;
    Listener other;
    list.Add(&twice);
    std::latch bothInside(2);
    std::latch removed(1);
    const auto callAndRemove = [&] {
        list.ForEach([&](Listener& listener) {
            bothInside.arrive_and_wait();
            removed.wait();
            list.Remove(&listener);
            list.Remove(&other);
        });
    };
    std::thread first(callAndRemove);
    std::thread second(callAndRemove);
    bothInside.wait();
    list.Add(&other);
    list.Remove(&other);  // both calls of the other one are still under way
    removed.count_down();
    first.join();
    second.join();
    list.Remove(&twice);
    EXPECT_FALSE(list.Close());
}

TEST(ListenerListTest, CloseEmptiesTheListAndTellsWhetherACallIsUnderWay) {
    ListenerList<Listener> list;
    Listener listener;
    Listener later;
    list.Add(&listener);
    list.Add(&later);
    int calls = 0;
    const auto closeInside = [&](Listener&) {
        ++calls;
        EXPECT_TRUE(list.Close());
        throw std::runtime_error("a call that throws has ended as well");
    };
    EXPECT_THROW(list.ForEach(closeInside), std::runtime_error);
    EXPECT_FALSE(list.Close());
    list.Add(&later);
    list.ForEach([&](Listener&) { ++calls; });
    EXPECT_EQ(calls, 1);
}

}  // namespace
