// What the service's clients wait for, over a device manager that answers at once (QuickPlayer.cpp). In the
// sandbox, as it runs the service:
//
//     tests/EndToEnd/sandbox.sh <build folder>/bench/bench_service_figures
#include <sys/wait.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <span>
#include <system_error>
#include <thread>

#include "ServiceUtil/LocalSocket.h"
#include "bench/Load.h"
#include "tests/EndToEnd/Client.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr std::uint16_t kPort = 8883;

/// One run of the service over the quick player.
class Service {
  public:
    explicit Service(const char* player, const char* eventInterval = nullptr) {
        setenv("LD_LIBRARY_PATH", QUICK_PLAYER_FOLDER, 1);
        setenv("QUICK_PLAYER", player, 1);
        eventInterval != nullptr ? setenv("QUICK_PLAYER_EVENTS", eventInterval, 1)
                                 : unsetenv("QUICK_PLAYER_EVENTS");
        m_pid = fork();
        if (m_pid == 0) {
            execl(IPOD_SERVICE, IPOD_SERVICE, "-l", "w", nullptr);
            _exit(127);
        }
        EndToEnd::Require("the port", [] {
            try {
                EndToEnd::Client();
                return true;
            } catch (const std::system_error&) {
                return false;
            }
        });
        if (std::string_view(player) != "none") {
            EndToEnd::Client client;
            EndToEnd::Require("the player", [&] {
                return client.Result("isIpodConnected")["connected"].asBool() &&
                       client.Result("getBrowseList")["categoryItems"][2]["isSupported"].asBool();
            });
        }
        std::this_thread::sleep_for(milliseconds(1500));  // past the signal that comes before the main loop
    }
    ~Service() { Stop(); }
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    /// Milliseconds from the signal to the end.
    double Stop() {
        if (m_pid < 0) {
            return 0;
        }
        const auto start = steady_clock::now();
        kill(m_pid, SIGTERM);
        waitpid(std::exchange(m_pid, -1), nullptr, 0);
        return Microseconds(steady_clock::now() - start).count() / 1000;
    }

    /// Of all its threads.
    long Wakeups() const {
        long sum = 0;
        const std::string folder = "/proc/" + std::to_string(m_pid) + "/task";
        for (const auto& thread : std::filesystem::directory_iterator(folder)) {
            std::ifstream status(thread.path() / "status");
            for (std::string word; status >> word;) {
                long count = 0;
                if (word == "voluntary_ctxt_switches:" && status >> count) {
                    sum += count;
                }
            }
        }
        return sum;
    }

  private:
    pid_t m_pid = -1;
};

/// The connection of a client with a small receive buffer that has asked for a picture of 2.8 MB.
Descriptor AskForPicture() {
    Descriptor client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int receiveBuffer = 4096;
    setsockopt(client.Get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    const sockaddr_in service = EndToEnd::ServiceAddress(EndToEnd::kLoopback);
    const std::string request = EndToEnd::Request("getCurrentAlbumArt", 1);
    if (connect(client.Get(), reinterpret_cast<const sockaddr*>(&service), sizeof service) != 0 ||
        !SendAll(client.Get(), std::as_bytes(std::span(request)))) {
        throw std::system_error(errno, std::generic_category(), "ask for a picture");
    }
    return client;
}

/// Clients that ask for such pictures and read 1 kB/s of them.
class SlowReaders {
  public:
    explicit SlowReaders(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_clients.push_back(AskForPicture());
        }
        m_thread = std::thread([this] { Read(); });
    }
    ~SlowReaders() {
        m_ended = true;
        m_thread.join();
    }
    SlowReaders(const SlowReaders&) = delete;
    SlowReaders& operator=(const SlowReaders&) = delete;

  private:
    void Read() {
        while (!m_ended) {
            std::this_thread::sleep_for(milliseconds(100));
            for (const Descriptor& client : m_clients) {
                std::array<char, 100> dropped{};
                recv(client.Get(), dropped.data(), dropped.size(), MSG_DONTWAIT);
            }
        }
    }

    std::vector<Descriptor> m_clients;
    std::atomic<bool> m_ended{false};
    std::thread m_thread;
};

double WorstRoundTripBeside(std::size_t slowReaders) {
    EndToEnd::Client client;
    client.Result("isIpodConnected");
    const SlowReaders readers(slowReaders);
    double worst = 0;
    for (const auto end = steady_clock::now() + std::chrono::seconds(6); steady_clock::now() < end;) {
        const auto start = steady_clock::now();
        client.Result("isIpodConnected");
        worst = std::max(worst, Microseconds(steady_clock::now() - start).count());
    }
    return worst / 1000;
}

/// How long each track info took from the player's event to this client, in microseconds.
std::vector<double> TrackInfoDelays(std::chrono::seconds duration) {
    EndToEnd::Client client;
    client.Result("isIpodConnected");
    std::vector<double> delays;
    for (const auto end = steady_clock::now() + duration; steady_clock::now() < end;) {
        const Json::Value params = client.Notification("trackInfoNotification");
        const auto now =
            std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now().time_since_epoch());
        const auto sent = params["trackInfo"]["trackTime"].asUInt();
        delays.push_back(static_cast<double>(static_cast<std::uint32_t>(now.count()) - sent));
    }
    return delays;
}

double WakeupsASecond(const Service& service) {
    constexpr int kSeconds = 20;
    const long before = service.Wakeups();
    std::this_thread::sleep_for(std::chrono::seconds(kSeconds));
    return static_cast<double>(service.Wakeups() - before) / kSeconds;
}

double MedianStop(const char* player) {
    std::vector<double> times;
    for (int i = 0; i < 5; ++i) {
        times.push_back(Service(player).Stop());
    }
    return Median(times);
}

double RequestsOverFloor() {
    std::vector<double> floors;
    std::vector<double> rates;
    Floor floor;
    Clients floorClients(floor.port);
    floor.Accept();
    std::atomic<bool> ended{false};
    std::thread server([&] {
        while (!ended) {
            floor.Step();
        }
    });
    Clients clients(kPort);
    for (int block = 0; block < 15; ++block) {
        floors.push_back(floorClients.Ask());
        rates.push_back(clients.Ask());
    }
    ended = true;
    server.join();
    return Median(rates) / Median(floors);
}

void Print(const std::string& what, double value, const char* unit) {
    std::printf("%-64s %9.2f %s\n", what.c_str(), value, unit);
    std::fflush(stdout);
}

void Run() {
    {
        const Service service("one");
        for (const std::size_t count : {1u, 6u, 64u}) {
            Print("worst round trip beside " + std::to_string(count) + " clients that read 1 kB/s",
                  WorstRoundTripBeside(count), "ms");
        }
        Print("requests a second, 64 connections, to the floor's", RequestsOverFloor(), "");
    }
    {
        const Service service("one");
        Print("wakeups a second, a player at rest", WakeupsASecond(service), "");
    }
    {
        const Service service("none");
        Print("wakeups a second, no player", WakeupsASecond(service), "");
    }
    {
        const Service service("one", "5000");
        const std::vector<double> delays = TrackInfoDelays(std::chrono::seconds(5));
        Print("event to notification, median", Median(delays) / 1000, "ms");
        Print("event to notification, worst", *std::max_element(delays.begin(), delays.end()) / 1000, "ms");
        const Descriptor sleeper = AskForPicture();
        const std::vector<double> beside = TrackInfoDelays(std::chrono::seconds(14));
        Print("the same beside a client that sleeps, worst",
              *std::max_element(beside.begin(), beside.end()) / 1000, "ms");
    }
    Print("stop without a player, median of 5", MedianStop("none"), "ms");
    Print("stop with a player, median of 5", MedianStop("one"), "ms");
}

}  // namespace

int main() {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr) {
        std::fputs("Closing a device deletes files in / and /home/root: run this in the sandbox.\n", stderr);
        return 2;
    }
    try {
        Run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
