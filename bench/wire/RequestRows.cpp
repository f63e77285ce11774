// Requests and their replies.
#include "bench/wire/Connection.h"
#include "bench/wire/Protocol.h"
#include "bench/wire/Rows.h"

namespace Bench {
namespace {

double AnswersASecond(const Server& server, std::size_t count) {
    constexpr std::chrono::milliseconds kTime(300);
    const Connections clients(server.Address(), count);
    for (const Connection& client : clients.All()) {
        client.Send(kRequest);
    }
    std::size_t answers = 0;
    std::size_t outstanding = count;
    bool isOver = false;
    SpinLimit limit;
    for (const auto start = Clock::now(); outstanding > 0; limit.Spin()) {
        isOver = isOver || Clock::now() - start >= kTime;
        clients.Poll([&](const Connection& client, std::size_t lines) {
            if (lines == 0) {
                return;
            }
            if (isOver) {
                --outstanding;
            } else {
                ++answers;
                client.Send(kRequest);
            }
        });
    }
    return static_cast<double>(answers) / std::chrono::duration<double>(kTime).count();
}

}  // namespace

Figures MeasureRequests(const Server& server) {
    constexpr int kRequests = 4000;
    const Connection client(server.Address());
    for (int i = 0; i < kRequests / 10; ++i) {
        client.Ask(kRequest);
    }
    std::vector<double> times;
    const double before = server.CpuMicroseconds();
    for (int i = 0; i < kRequests; ++i) {
        const auto start = Clock::now();
        client.Ask(kRequest);
        times.push_back(Microseconds(Clock::now() - start).count());
    }
    const double cpu = server.CpuMicroseconds() - before;
    return {{"request-cpu", cpu / kRequests}, {"round-trip", Median(std::move(times))}};
}

Figures MeasureThroughput(const Server& server) {
    return {{"requests-8", AnswersASecond(server, 8)}, {"requests-64", AnswersASecond(server, 64)}};
}

Figures MeasureConnect(const Server& server) {
    constexpr int kTimes = 500;
    std::vector<double> times;
    for (int i = 0; i < kTimes; ++i) {
        const auto start = Clock::now();
        Connection(server.Address()).Ask(kRequest);
        times.push_back(Microseconds(Clock::now() - start).count());
    }
    return {{"connect", Median(std::move(times))}};
}

}  // namespace Bench
