// What a device-manager call to the player's process costs, beside a bare exchange of the same bytes over a
// socket between two processes.
//
//     bench_device_call
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <thread>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/wire/Protocol.h"
#include "bench/Result.h"

namespace {

using DeviceSimulator::Wire::AnswerHead;
using DeviceSimulator::Wire::CallHead;

constexpr int kRounds = 20;

double MicrosecondsEach(int times, const std::function<void()>& work) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        work();
    }
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count() /
           times;
}

void ReadWhole(int socket, std::vector<char>& bytes) {
    for (std::size_t there = 0; there < bytes.size();) {
        const ssize_t count = recv(socket, bytes.data() + there, bytes.size() - there, 0);
        if (count <= 0) {
            _exit(0);
        }
        there += static_cast<std::size_t>(count);
    }
}

/// Another process that answers `there` bytes with `back`.
class PingPong {
  public:
    PingPong(std::size_t there, std::size_t back) : m_there(there), m_back(back) {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            std::abort();
        }
        m_child = fork();
        if (m_child == 0) {
            close(ends[0]);
            for (;;) {
                ReadWhole(ends[1], m_there);
                send(ends[1], m_back.data(), m_back.size(), MSG_NOSIGNAL);
            }
        }
        close(ends[1]);
        m_socket = ends[0];
    }
    ~PingPong() {
        close(m_socket);
        waitpid(m_child, nullptr, 0);
    }
    PingPong(const PingPong&) = delete;
    PingPong& operator=(const PingPong&) = delete;

    void Exchange() {
        send(m_socket, m_there.data(), m_there.size(), MSG_NOSIGNAL);
        ReadWhole(m_socket, m_back);
    }

  private:
    std::vector<char> m_there;
    std::vector<char> m_back;
    int m_socket = -1;
    pid_t m_child = -1;
};

/// Both in turns, so that what else the machine does falls on both.
void Compare(const char* row, std::size_t there, std::size_t back, int times,
             const std::function<void()>& call) {
    PingPong pingPong(sizeof(CallHead) + there, sizeof(AnswerHead) + back);
    std::vector<double> calls;
    std::vector<double> bare;
    for (int i = 0; i < kRounds; ++i) {
        bare.push_back(MicrosecondsEach(times, [&] { pingPong.Exchange(); }));
        calls.push_back(MicrosecondsEach(times, call));
    }
    std::sort(calls.begin(), calls.end());
    std::sort(bare.begin(), bare.end());
    Bench::Report(row, calls[kRounds / 2], bare[kRounds / 2]);
}

}  // namespace

int main() {
    setenv("DEVICE_SIMULATOR_DEVICE", "iap", 1);
    setenv("DEVICE_SIMULATOR_TRACKS", "10000", 1);
    u32 process = 0;
    u32 count = 0;
    if (eDevMgrRegisterProcess(&process, [](const DeviceEvent*, u32) {}) != DEV_MGR_SUCCESS) {
        return 1;
    }
    while (eDevMgrGetNumDevices(process, &count) == DEV_MGR_SUCCESS && count == 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (eDevMgrOpenDevice(process, 1) != DEV_MGR_SUCCESS ||
        eDevMgriPodOpenMdBrowseSession(process, 1, 1) != DEV_MGR_SUCCESS ||
        eDevMgriPodPlay(process, 1) != DEV_MGR_SUCCESS) {
        std::fprintf(stderr, "there is no player to call\n");
        return 1;
    }
    u32 status = 0;
    Compare("device-call-status", 13, 4, 2000, [&] { eDevMgriPodGetPlayStatus(process, 1, &status); });
    for (const u32 wanted : {50U, 10'000U}) {
        std::vector<BrowseItem> items(wanted);
        Compare(wanted == 50 ? "device-call-50" : "device-call-10000", 30, 8 + wanted * sizeof(BrowseItem),
                wanted == 50 ? 1000 : 20, [&] {
                    count = wanted;
                    eDevMgriPodGetItems(process, 1, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 0,
                                        &count, items.data());
                });
    }
    return eDevMgrDeRegisterProcess(process) == DEV_MGR_SUCCESS ? 0 : 1;
}
