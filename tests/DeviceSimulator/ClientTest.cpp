// libdevicemanager.so with a player in another process.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <list>
#include <mutex>
#include <thread>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/wire/Protocol.h"
#include "DeviceSimulator/wire/Stream.h"
#include "ScratchFolder.h"
#include "tests/Support/Deadline.h"

namespace DeviceSimulator::Test {
namespace {

using TestSupport::WaitUntil;
using namespace std::chrono_literals;

std::mutex g_mutex;
std::vector<std::pair<u32, u32>> g_told;  // process and event

void Note(const DeviceEvent* event, u32 process) {
    const std::lock_guard lock(g_mutex);
    g_told.emplace_back(process, event->words[0]);
}

bool IsTold(u32 process, u32 event) {
    return WaitUntil([=] {
        const std::lock_guard lock(g_mutex);
        return std::find(g_told.begin(), g_told.end(), std::pair(process, event)) != g_told.end();
    });
}

/// The child of this process that is a player; -1 when there is none.
pid_t PlayerProcess() {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = -1; children >> child;) {
            std::string name;
            std::ifstream("/proc/" + std::to_string(child) + "/comm") >> name;
            if (name.starts_with("simulated-playe")) {
                return child;
            }
        }
    }
    return -1;
}

class ClientTest : public testing::Test {
  protected:
    ClientTest() {
        setenv("DEVICE_SIMULATOR_DEVICE", "iap", 1);
        setenv("DEVICE_SIMULATOR_CONTROL", (folder.Path() / "control").c_str(), 1);
    }
    ~ClientTest() override {
        EndPlayer();
        for (const u32 each : registered) {
            eDevMgrDeRegisterProcess(each);  // no callback runs when what it uses is destroyed
        }
        unsetenv(kPlayerVariable);
    }

    u32 Register() {
        EXPECT_EQ(eDevMgrRegisterProcess(&registered.emplace_back(0), Note), DEV_MGR_SUCCESS);
        return registered.back();
    }
    u32 OpenPlayer() {
        process = Register();
        u32 count = 0;
        EXPECT_TRUE(WaitUntil(
            [&] { return eDevMgrGetNumDevices(process, &count) == DEV_MGR_SUCCESS && count == 1; }));
        DeviceRecord record{};
        EXPECT_EQ(eDevMgrGetDeviceList(process, &record, 0, &count), DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgrOpenDevice(process, record.handle), DEV_MGR_SUCCESS);
        EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(process, record.handle, 1), DEV_MGR_SUCCESS);
        return record.handle;
    }
    /// So that the next test has one of its own.
    void EndPlayer() {
        const pid_t player = PlayerProcess();
        if (player < 0) {
            return;
        }
        kill(player, SIGKILL);
        EXPECT_TRUE(WaitUntil([player] { return kill(player, 0) != 0; })) << "a zombie stays";
    }
    std::string Command(const std::string& line) {
        const Descriptor socket = ConnectToPlayer(folder.Path() / "control");
        const std::string text = line + "\n";
        EXPECT_TRUE(SendAll(socket.Get(), std::as_bytes(std::span(text))));
        std::string answer(4096, ' ');
        const ssize_t count = recv(socket.Get(), answer.data(), answer.size(), 0);
        EXPECT_GT(count, 0);
        return answer.substr(0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }

    ScratchFolder folder;
    std::list<u32> registered;
    u32 process = 0;
};

TEST_F(ClientTest, ArgumentsOfEveryKindGoThereAndBack) {
    const u32 device = OpenPlayer();
    u32 count = 3;
    BrowseItem items[4]{};
    items[3].id = 77;
    const auto fetch = [&](u32 start, u32* wanted, BrowseItem* list) {
        return eDevMgriPodGetItems(process, device, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, start,
                                   wanted, list);
    };
    EXPECT_EQ(fetch(5, &count, items), DEV_MGR_SUCCESS);
    EXPECT_EQ(count, 3U);
    EXPECT_STREQ(items[0].name, "99 Lives");
    EXPECT_EQ(items[2].id, 7U);
    EXPECT_EQ(items[3].id, 77U);
    count = 0xFFFFFFFF;  // what the list has room for, not how long it is
    std::vector<BrowseItem> all(1000);
    EXPECT_EQ(fetch(0, &count, all.data()), DEV_MGR_SUCCESS);
    EXPECT_EQ(count, 317U);
    EXPECT_EQ(fetch(317, &count, all.data()), u32{DEV_MGR_IAP_INVALID_INDEX});
    EXPECT_EQ(count, 317U);
    EXPECT_EQ(fetch(0, nullptr, all.data()), u32{DEV_MGR_WRONG_PARAMS});
    EXPECT_EQ(fetch(0, &count, nullptr), u32{DEV_MGR_WRONG_PARAMS});
    EXPECT_EQ(eDevMgrRegisterProcess(nullptr, Note), u32{DEV_MGR_WRONG_PARAMS});
    EXPECT_EQ(eDevMgrRegisterProcess(&count, nullptr), u32{DEV_MGR_WRONG_PARAMS});

    char path[] = "a.db";
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(process, device, path),
              u32{DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE});
    u8 mute = 9;
    u8 volume = 9;
    EXPECT_EQ(eDevmgriPodSetVolume(process, device, 1, 200), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevmgriPodGetVolume(process, device, &mute, &volume), DEV_MGR_SUCCESS);
    EXPECT_EQ(std::pair(int{mute}, int{volume}), std::pair(1, 200));
    char* name = path;
    EXPECT_EQ(eDevMgriPodGetNowPlayingAppname(process, device, &name), DEV_MGR_SUCCESS);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(eDevMgriPodPlay(process, device), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgriPodGetNowPlayingAppname(process, device, &name), DEV_MGR_SUCCESS);
    EXPECT_STREQ(name, "Music");
    std::free(name);
    EXPECT_TRUE(IsTold(process, DEV_MGR_EVENT_PLAY_STARTED));
}

TEST_F(ClientTest, ABlockIsSharedUntilItIsGivenBack) {
    const u32 device = OpenPlayer();
    u32 size = 0x200000;
    u32 block = 0;
    EXPECT_EQ(eDevMgrAllocateSharedMemory(process, &size, nullptr), u32{DEV_MGR_WRONG_PARAMS});
    ASSERT_EQ(eDevMgrAllocateSharedMemory(process, &size, &block), DEV_MGR_SUCCESS);
    EXPECT_EQ(size, 0x200000U);
    auto* const bytes = reinterpret_cast<u8*>(std::uintptr_t{block});
    std::fill_n(bytes, size, u8{9});
    ASSERT_EQ(eDevMgriPodPlay(process, device), DEV_MGR_SUCCESS);
    u32 height = 0;
    u32 width = 0;
    ASSERT_EQ(eDevMgriPodGetPlayingTrackAlbumArt(process, device, &height, &width, block), DEV_MGR_SUCCESS);
    EXPECT_EQ(bytes[0], 0xFFU);
    EXPECT_EQ(bytes[1], 0xD8U);
    EXPECT_EQ(bytes[height * width * 2], 9U);
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(Register(), block), u32{DEV_MGR_WROG_SHARED_MEMORY});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(process, block), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(process, block), u32{DEV_MGR_WROG_SHARED_MEMORY});
    size = UINT32_MAX;
    EXPECT_EQ(eDevMgrAllocateSharedMemory(process, &size, &block), u32{DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY});
}

TEST_F(ClientTest, ACallThatHangsHoldsUpNoOther) {
    const u32 device = OpenPlayer();
    Command(R"({"command":"delay","call":"eDevMgriPodPlay","milliseconds":3600000})");
    std::atomic<u32> result{0};
    std::thread caller([&] { result = eDevMgriPodPlay(process, device); });
    Command(R"({"command":"wait","call":"eDevMgriPodPlay"})");
    u32 status = 99;
    EXPECT_EQ(eDevMgriPodGetPlayStatus(process, device, &status), DEV_MGR_SUCCESS);
    EXPECT_EQ(status, u32{E_DEVMGR_IPOD_PLAY_STOPPED});
    EXPECT_EQ(result, 0U);
    EndPlayer();
    caller.join();
    EXPECT_EQ(result, u32{DEV_MGR_DEVICE_NOT_RESPONDING});
}

std::atomic<int> g_callbacks{0};

void DeregisterInside(const DeviceEvent*, u32 process) {
    ++g_callbacks;
    EXPECT_EQ(eDevMgrDeRegisterProcess(process), DEV_MGR_SUCCESS);
}

std::mutex g_held;

TEST_F(ClientTest, ACallbackThatHangsHoldsUpNoOtherAndNoMoreThanIsBounded) {
    OpenPlayer();
    u32 hanging = 0;
    std::unique_lock lock(g_held);
    const auto hang = [](const DeviceEvent*, u32) {
        g_callbacks = 1;
        const std::lock_guard wait(g_held);
    };
    g_callbacks = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&hanging, hang), DEV_MGR_SUCCESS);
    Command(R"({"command":"event","words":[2]})");
    ASSERT_TRUE(WaitUntil([] { return g_callbacks == 1; }));
    Command(R"({"command":"event","words":[5]})");
    Command(R"({"command":"event","words":[6]})");
    EXPECT_TRUE(IsTold(process, 6));
    // Each is two, one a process; what the library and the sockets take does not wait in the player.
    int taken = 0;
    while (taken < 20'000 &&
           Command(R"({"command":"event","words":[2]})").find("too many") == std::string::npos) {
        ++taken;
    }
    EXPECT_GE(taken, 512);
    EXPECT_LT(taken, 20'000);
    lock.unlock();
    EXPECT_EQ(eDevMgrDeRegisterProcess(hanging), DEV_MGR_SUCCESS);
}

std::atomic<bool> g_isLeaving{false};

void TakeTime(const DeviceEvent*, u32) {
    ++g_callbacks;
    WaitUntil([] { return g_isLeaving.load(); });
    std::this_thread::sleep_for(20ms);
    --g_callbacks;
}

TEST_F(ClientTest, DeregisteringWaitsForACallbackButNotForItsOwn) {
    u32 inside = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&inside, DeregisterInside), DEV_MGR_SUCCESS);
    ASSERT_TRUE(WaitUntil([] { return g_callbacks == 1; }));
    EXPECT_TRUE(
        WaitUntil([=] { return eDevMgrDeRegisterProcess(inside) == DEV_MGR_PROCESS_NOT_REGISTERED; }));
    g_callbacks = 0;
    u32 slow = 0;
    ASSERT_EQ(eDevMgrRegisterProcess(&slow, TakeTime), DEV_MGR_SUCCESS);
    Command(R"({"command":"event","words":[2]})");
    ASSERT_TRUE(WaitUntil([] { return g_callbacks == 1; }));
    g_isLeaving = true;
    EXPECT_EQ(eDevMgrDeRegisterProcess(slow), DEV_MGR_SUCCESS);
    EXPECT_EQ(g_callbacks, 0);
}

TEST_F(ClientTest, AKilledPlayerIsToldOfAndTheNextOneIsAnother) {
    OpenPlayer();
    const u32 first = process;
    u32 size = 4096;
    u32 block = 0;
    ASSERT_EQ(eDevMgrAllocateSharedMemory(first, &size, &block), DEV_MGR_SUCCESS);
    EndPlayer();
    EXPECT_TRUE(IsTold(first, DEV_MGR_EVENT_DEVICE_MANAGER_EXITED));
    u32 count = 0;
    EXPECT_EQ(eDevMgrGetNumDevices(first, &count), u32{DEV_MGR_DEVICE_NOT_RESPONDING});
    const u32 second = Register();
    EXPECT_NE(second, first);
    EXPECT_EQ(eDevMgrGetNumDevices(second, &count), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrGetNumDevices(first, &count), u32{DEV_MGR_DEVICE_NOT_RESPONDING});
    EXPECT_EQ(eDevMgrDeAllocateSharedMemory(first, block), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrDeRegisterProcess(first), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrDeRegisterProcess(first), u32{DEV_MGR_PROCESS_NOT_REGISTERED});
}

/// What a listener at the path does with a connection makes registration fail, and does not hold it up.
TEST_F(ClientTest, WhatIsNoPlayerIsRefused) {
    const std::string path = folder.Path() / "player";
    setenv(kPlayerVariable, path.c_str(), 1);
    u32 handle = 7;
    std::ofstream(path) << "a file";
    EXPECT_EQ(eDevMgrRegisterProcess(&handle, Note), u32{DEV_MGR_PROCESS_REGISTRY_FAILED});
    std::filesystem::remove(path);
    std::string error;
    const Descriptor listener = ListenForClients(path, error);
    ASSERT_TRUE(listener.IsOpen()) << error;
    const Wire::HelloAnswer answers[] = {
        {.magic = 1, .isWelcome = 1}, {.version = Wire::kVersion + 1, .isWelcome = 1}, {.isWelcome = 0}};
    for (const Wire::HelloAnswer& answer : answers) {
        std::thread other([&] {
            const Descriptor client(accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
            Wire::Hello hello;
            Wire::ReceiveFlat(client.Get(), hello);
            Wire::SendFlat(client.Get(), answer);
        });
        EXPECT_EQ(eDevMgrRegisterProcess(&handle, Note), u32{DEV_MGR_PROCESS_REGISTRY_FAILED});
        other.join();
    }
    EXPECT_EQ(handle, 7U);
}

/// A connection whose hello has been answered.
Descriptor Greet(const std::string& path, Wire::ConnectionKind kind, std::uint64_t client) {
    Descriptor socket = ConnectToPlayer(path);
    Wire::HelloAnswer answer;
    EXPECT_TRUE(Wire::SendFlat(socket.Get(), Wire::Hello{.kind = kind, .client = client}));
    EXPECT_TRUE(Wire::ReceiveFlat(socket.Get(), answer));
    EXPECT_EQ(answer.isWelcome, 1U);
    return socket;
}

TEST_F(ClientTest, AStaleSocketIsTakenOverAndWhoMakesNoSenseIsTurnedAway) {
    const std::string path = folder.Path() / "player";
    setenv(kPlayerVariable, path.c_str(), 1);
    std::string error;
    ListenForClients(path, error);  // and gone again
    ASSERT_TRUE(std::filesystem::exists(path)) << error;
    const u32 device = OpenPlayer();
    EXPECT_FALSE(ListenForClients(path, error).IsOpen());
    Wire::Hello stranger;
    ++stranger.version;
    Wire::HelloAnswer told;
    const Descriptor strange = ConnectToPlayer(path);
    ASSERT_TRUE(Wire::SendFlat(strange.Get(), stranger) && Wire::ReceiveFlat(strange.Get(), told));
    EXPECT_EQ(told.version, Wire::kVersion);
    EXPECT_EQ(told.isWelcome, 0U);

    const Descriptor life = Greet(path, Wire::ConnectionKind::Events, 5);
    struct {
        std::uint64_t client;
        Wire::CallHead head;
    } const cases[] = {
        {6, {.length = 8}},                  // a client that nobody is
        {5, {.length = 8, .function = 41}},  // no function
        {5, {.length = 7, .function = 24}},  // eDevMgriPodPlay with too little
        {5, {.length = 9, .function = 24}},  // and with too much
        {5, {.length = Wire::kLongestCall + 1}},
    };
    for (const auto& each : cases) {
        const Descriptor socket = Greet(path, Wire::ConnectionKind::Calls, each.client);
        Wire::Bytes message;
        Wire::Put(message, each.head);
        message.resize(message.size() + each.head.length);
        SendAll(socket.Get(), message);
        Wire::AnswerHead answer;
        EXPECT_FALSE(Wire::ReceiveFlat(socket.Get(), answer)) << each.head.length;
    }
    EXPECT_EQ(eDevMgriPodPlay(process, device), DEV_MGR_SUCCESS);
}

}  // namespace
}  // namespace DeviceSimulator::Test
