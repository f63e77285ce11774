// What clients wait for that do nothing wrong, while others do.
#include <sys/socket.h>

#include <algorithm>
#include <charconv>

#include "bench/wire/Connection.h"
#include "bench/wire/Protocol.h"
#include "bench/wire/Rows.h"

namespace Bench {
namespace {

constexpr int kSmallReceiveBuffer = 4096;

/// Clients that have asked for a picture and take a little of it now and then.
class SlowReaders {
  public:
    SlowReaders(const Server& server, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            m_clients.emplace_back(server.Address(), kSmallReceiveBuffer);
            m_clients.back().Send(kPictureRequest);
        }
    }
    void Read() {
        constexpr std::chrono::milliseconds kPause(100);
        if (Clock::now() < m_next) {
            return;
        }
        m_next = Clock::now() + kPause;
        for (const Connection& client : m_clients) {
            std::array<char, 100> dropped{};
            recv(client.Socket(), dropped.data(), dropped.size(), MSG_DONTWAIT);
        }
    }

  private:
    std::vector<Connection> m_clients;
    Clock::time_point m_next{};
};

double WorstRoundTripBeside(const Server& server, std::size_t count) {
    constexpr std::chrono::seconds kTime(6);
    const Connection client(server.Address());
    client.Ask(kRequest);
    SlowReaders readers(server, count);
    double worst = 0;
    for (const auto end = Clock::now() + kTime; Clock::now() < end;) {
        const auto start = Clock::now();
        client.Ask(kRequest);
        worst = std::max(worst, Microseconds(Clock::now() - start).count());
        readers.Read();
    }
    return worst / 1000;
}

/// The player tells as the track's time when it reported the track.
double DelaySince(std::string_view line) {
    constexpr std::string_view kKey = "\"trackTime\":";
    const std::size_t at = line.find(kKey);
    std::uint32_t sent = 0;
    if (at == std::string_view::npos) {
        return 0;
    }
    std::from_chars(line.data() + at + kKey.size(), line.data() + line.size(), sent);
    const auto now = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch());
    return (static_cast<std::uint32_t>(now.count()) - sent) / 1000.0;
}

std::vector<double> TrackInfoDelays(const Server& server, std::chrono::seconds time) {
    const Connection client(server.Address());
    client.Ask(kRequest);
    std::vector<double> delays;
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        std::string line;
        client.Await(1, &line);
        if (line.find("trackInfoNotification") != std::string::npos) {
            delays.push_back(DelaySince(line));
        }
    }
    return delays;
}

double Worst(const std::vector<double>& values) {
    return *std::max_element(values.begin(), values.end());
}

}  // namespace

Figures MeasureBesideSlowReaders(const Server& server) {
    Figures figures;
    for (const std::size_t count : {1U, 6U, 64U}) {
        figures.push_back({"slow-readers-" + std::to_string(count), WorstRoundTripBeside(server, count)});
    }
    return figures;
}

Figures MeasureEvents(const Program& program) {
    const Server server(program, kOwnRun, {{"QUICK_PLAYER_EVENTS", "5000"}});
    server.AwaitPlayer();
    const std::vector<double> delays = TrackInfoDelays(server, std::chrono::seconds(5));
    const Connection sleeper(server.Address(), kSmallReceiveBuffer);
    sleeper.Send(kPictureRequest);
    const std::vector<double> beside = TrackInfoDelays(server, std::chrono::seconds(14));
    return {{"event-median", Median(delays)},
            {"event-worst", Worst(delays)},
            {"event-worst-beside", Worst(beside)}};
}

}  // namespace Bench
