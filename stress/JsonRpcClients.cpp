// "json_rpc_stress": clients that are slow, asleep, trickling, half-closed, flooding or killed, with the
// service's own limits. Prints what they cost; ends with 1 when a claim does not hold. Takes a minute.

#include <vector>

#include "stress/JsonRpcStress.h"

namespace stress {
namespace {

constexpr std::size_t kSongList = 5000000;

void SlowReaderGetsItsList() {
    Server server;
    Client slow(server);
    Client other(server);
    other.RoundTrip();
    slow.Send(Fill(kSongList));
    // The system's own buffers hold what the slow client does not take; it is slow for longer than a client
    // may go without taking enough.
    std::size_t taken = 0;
    double worst = 0;
    for (const auto start = Clock::now(); MillisecondsSince(start) < 25000;) {
        taken += slow.Read(2000);
        server.Tcp().Broadcast("note\n");
        other.ReadLines(1);
        worst = std::max(worst, other.RoundTrip());
        std::this_thread::sleep_until(start + std::chrono::milliseconds(taken / 20));
    }
    Claim("a client that reads 20 kB/s is there after 25 s: bytes taken", static_cast<double>(taken), "B",
          400000, false);
    Claim("another client's worst round trip beside it", worst, "ms", 100);
    while (slow.last.find('\n') == std::string::npos) {
        taken += slow.Read(65536);
    }
    Claim("and it gets its list of 5 MB whole", static_cast<double>(taken), "B", kSongList, false);
}

void TricklingReadersAreLetGo(std::size_t count) {
    Server server;
    std::vector<std::unique_ptr<Client>> slow;
    Client other(server);
    other.RoundTrip();
    for (std::size_t i = 0; i < count; ++i) {
        slow.push_back(std::make_unique<Client>(server, 4096));
        slow.back()->Send(Fill(kSongList));
        slow.back()->Read(1);
    }
    std::atomic<bool> done{false};
    std::thread readers([&] {
        while (!done) {
            for (const auto& client : slow) {
                client->Read(100, 0);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    const std::string beside = "worst round trip beside " + std::to_string(count) + " that read 1 kB/s";
    Claim(beside.c_str(), WorstRoundTrip(other, 3000), "ms", 100);
    server.HasClosed(static_cast<int>(count));
    Claim("of these are disconnected within 20 s", static_cast<double>(server.closed), "",
          static_cast<double>(count), false);
    done = true;
    readers.join();
}

void SleeperDelaysNoNotification() {
    Server server;
    Client sleeper(server, 4096);
    Client awake(server);
    sleeper.RoundTrip();
    awake.RoundTrip();
    const std::string note = std::string(20000, 'n') + "\n";
    double worst = 0;
    double broadcast = 0;
    for (int i = 0; i < 2000; ++i) {
        const auto start = Clock::now();
        server.Tcp().Broadcast(note);
        broadcast = std::max(broadcast, MillisecondsSince(start));
        awake.ReadLines(1);
        worst = std::max(worst, MillisecondsSince(start));
    }
    Claim("2,000 notifications beside a sleeping client: the longest to arrive took", worst, "ms", 20);
    Claim("the longest hold of the thread that sends them", broadcast, "ms", 20);
    server.HasClosed(1);
    Claim("the sleeper is disconnected", static_cast<double>(server.closed), "", 1, false);
}

void HalfClosedClientsCostNothing() {
    Server server;
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<Client>(server, 4096));
        clients.back()->Send(Fill(kSongList));
        clients.back()->EndSending();
        clients.back()->Read(1);
    }
    const long before = server.turns;
    std::this_thread::sleep_for(std::chrono::seconds(2));
    Claim("wakeups a second with 50 half-closed clients that do not read",
          static_cast<double>(server.turns - before) / 2, "", 5);
}

void FloodingClientLeavesOthersTheirTurn() {
    Server server;
    Client other(server);
    other.RoundTrip();
    std::string requests;
    for (int i = 0; i < 500; ++i) {
        requests += kPing;
    }
    std::atomic<bool> done{false};
    std::vector<std::thread> floods;
    for (int i = 0; i < 4; ++i) {
        floods.emplace_back([&, i] {
            Client client(server);
            while (!done) {
                client.TrySend(i % 2 == 0 ? requests : std::string(30000, '['));
                client.Read(1000000, 0);
            }
        });
    }
    Claim("worst round trip beside 4 clients that send without end", WorstRoundTrip(other, 3000), "ms", 100);
    done = true;
    for (std::thread& flood : floods) {
        flood.join();
    }
}

void KilledClientsLeaveNothing() {
    Server server;
    Client other(server);
    other.RoundTrip();
    double worst = 0;
    for (int i = 0; i < 500; ++i) {
        Client killed(server, 4096);
        killed.Send(i % 3 == 0 ? Fill(300000) : i % 3 == 1 ? kPing + "{\"half\":" : std::string(1, '['));
        killed.Read(1, i % 3 == 2 ? 0 : 1000);
        killed.Kill();
        server.Tcp().Broadcast("note\n");
        other.ReadLines(1);
        worst = std::max(worst, other.RoundTrip());
    }
    Claim("worst round trip while 500 clients are killed in the middle of things", worst, "ms", 100);
    server.HasClients(1);
    Claim("clients that are left", static_cast<double>(server.Tcp().GetClients().size()), "", 1);
}

void Run() {
    SlowReaderGetsItsList();
    for (const std::size_t count : {1U, 6U, 64U}) {
        TricklingReadersAreLetGo(count);
    }
    SleeperDelaysNoNotification();
    HalfClosedClientsCostNothing();
    FloodingClientLeavesOthersTheirTurn();
    KilledClientsLeaveNothing();
    CheckMemory();
}

}  // namespace
}  // namespace stress

int main() {
    stress::Run();
    return stress::failures == 0 ? 0 : 1;
}
