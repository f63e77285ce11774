// "player_kill COUNT [SEED]": threads that call the player in another process for all they are worth, while
// it is killed COUNT times at any moment. Every call must come back, with a code that fits; each death is
// told once to every process, and afterwards there is a player again.

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace {

using namespace std::chrono_literals;

std::atomic<bool> g_isOver{false};
std::atomic<std::uint64_t> g_calls{0};
std::atomic<std::uint64_t> g_failures{0};
std::atomic<std::uint64_t> g_lives{0};

void Check(bool isGood, const char* what, u32 result) {
    if (!isGood && g_failures++ < 10) {
        std::fprintf(stderr, "%s: %u\n", what, result);
    }
}

std::mutex g_mutex;
std::map<u32, int> g_exits;  // by process

void Note(const DeviceEvent* event, u32 process) {
    if (event->words[0] == DEV_MGR_EVENT_DEVICE_MANAGER_EXITED) {
        const std::lock_guard lock(g_mutex);
        ++g_exits[process];
    }
}

bool HasExited(u32 process) {
    const std::lock_guard lock(g_mutex);
    return g_exits[process] != 0;
}

/// Of one process until its player has gone. What it is answered in that time is only counted.
class Life {
  public:
    explicit Life(u32 process) : m_process(process) {}

    void Live(std::minstd_rand& random) {
        u32 size = 1U << (12 + random() % 8);
        u32 block = 0;
        const bool hasBlock = Good(eDevMgrAllocateSharedMemory(m_process, &size, &block));
        if (hasBlock) {
            *reinterpret_cast<u8*>(std::uintptr_t{block}) = 1;
        }
        while (!g_isOver && m_isAlive && random() % 256 != 0) {
            CallSomething(random, block);
        }
        if (hasBlock) {
            const u32 freed = eDevMgrDeAllocateSharedMemory(m_process, block);
            Check(freed == DEV_MGR_SUCCESS, "a block could not be given back", freed);
        }
        const u32 left = eDevMgrDeRegisterProcess(m_process);
        Check(left == DEV_MGR_SUCCESS, "a process could not be deregistered", left);
        ++g_lives;
    }

  private:
    bool Good(u32 result) {
        ++g_calls;
        m_isAlive = m_isAlive && result != DEV_MGR_DEVICE_NOT_RESPONDING;
        Check(result >= DEV_MGR_SUCCESS && result <= DEV_MGR_UNKNOWN_FAILURE, "no result", result);
        return result == DEV_MGR_SUCCESS;
    }

    void CallSomething(std::minstd_rand& random, u32 block) {
        const u32 device = 1;
        u32 numbers[2] = {3, 3};
        switch (random() % 8) {
            case 0:
                Good(eDevMgrOpenDevice(m_process, device));
                Good(eDevMgriPodOpenMdBrowseSession(m_process, device, 1));
                break;
            case 1:
                m_items.resize(400);
                numbers[0] = 400;
                if (Good(eDevMgriPodGetItems(m_process, device, DEV_MGR_WHOLE_LIBRARY, 0,
                                             DEV_MGR_CATEGORY_TRACK, 0, numbers, m_items.data()))) {
                    Check(numbers[0] <= 400 && m_items[1].id == 1, "a list is not whole", numbers[0]);
                }
                break;
            case 2:
                Good(eDevMgriPodPlay(m_process, device));
                break;
            case 3:
                Good(eDevMgriPodGetPlayingTrackAlbumArt(m_process, device, &numbers[0], &numbers[1], block));
                break;
            case 4:
                Good(eDevMgriPodPlayNextPreviousTrack(m_process, device, DEV_MGR_SKIP_NEXT));
                break;
            case 5:
                Good(eDevMgrCloseDevice(m_process, device));
                break;
            default:
                Good(eDevMgrGetNumDevices(m_process, numbers));
                break;
        }
    }

    const u32 m_process;
    bool m_isAlive = true;
    std::vector<BrowseItem> m_items;
};

void LiveOnAndOn(std::uint32_t seed) {
    std::minstd_rand random(seed);
    while (!g_isOver) {
        u32 process = 0;
        const u32 result = eDevMgrRegisterProcess(&process, Note);
        if (result == DEV_MGR_SUCCESS) {
            Life(process).Live(random);
        } else {
            // It died in that very call, or the other one's end is not through yet.
            Check(result == DEV_MGR_DEVICE_NOT_RESPONDING || result == DEV_MGR_PROCESS_REGISTRY_FAILED,
                  "a process could not be registered", result);
        }
    }
}

/// A child of this process, whichever thread has started it; -1 when there is none.
pid_t Player() {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        pid_t child = -1;
        if (children >> child) {
            return child;
        }
    }
    return -1;
}

/// After the loud ones, one that does nothing hears of its player's end, once.
void CheckThatEndIsTold() {
    u32 process = 0;
    u32 result = eDevMgrRegisterProcess(&process, Note);
    if (result == DEV_MGR_DEVICE_NOT_RESPONDING) {
        // The one that was killed last had not been missed yet; this call has told so.
        result = eDevMgrRegisterProcess(&process, Note);
    }
    const pid_t player = Player();
    Check(result == DEV_MGR_SUCCESS && player > 0, "there is no player in the end", result);
    if (result != DEV_MGR_SUCCESS || player <= 0) {
        return;
    }
    kill(player, SIGKILL);
    const auto until = std::chrono::steady_clock::now() + 10s;
    while (!HasExited(process) && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(1ms);
    }
    eDevMgrDeRegisterProcess(process);
    const std::lock_guard lock(g_mutex);
    for (const auto& [told, times] : g_exits) {
        Check(times == 1, "an end was told more than once", told);
    }
    Check(g_exits[process] == 1, "the end was not told", process);
}

int Run(int count, std::uint32_t seed) {
    std::vector<std::thread> threads;
    for (std::uint32_t i = 0; i < 3; ++i) {
        threads.emplace_back(LiveOnAndOn, seed + i);
    }
    std::minstd_rand random(seed);
    int killed = 0;
    while (killed < count) {
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 60'000));
        const pid_t player = Player();
        killed += player > 0 && kill(player, SIGKILL) == 0 ? 1 : 0;
    }
    g_isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    CheckThatEndIsTold();
    std::printf("%d players killed, %llu calls of %llu processes, %llu failures\n", killed,
                static_cast<unsigned long long>(g_calls.load()),
                static_cast<unsigned long long>(g_lives.load()),
                static_cast<unsigned long long>(g_failures.load()));
    return g_failures == 0 && g_lives > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    const int count = argc > 1 ? std::atoi(argv[1]) : 0;
    if (count <= 0) {
        std::fprintf(stderr, "usage: %s COUNT [SEED]\n", argv[0]);
        return 2;
    }
    setenv("DEVICE_SIMULATOR_DEVICE", "iap", 1);
    unsetenv("DEVICE_SIMULATOR_PLAYER");
    unsetenv("DEVICE_SIMULATOR_CONTROL");
    return Run(count, argc > 2 ? static_cast<std::uint32_t>(std::atoi(argv[2])) : 1);
}
