// Changes, and when clients know of them.
#include <stdexcept>

#include "bench/wire/Connection.h"
#include "bench/wire/Protocol.h"
#include "bench/wire/Rows.h"

namespace Bench {
namespace {

/// Who asks for changes, and who else hears of them. The player plays before the first, and again after an
/// even number of them, as the next audience expects it.
class Audience {
  public:
    Audience(const Server& server, std::size_t listeners)
        : m_listeners(server.Address(), listeners), m_asker(server.Address()) {
        m_asker.Ask(kRequest);  // the server knows it
    }

    /// Asks for the next change and returns once everybody knows of it. The time until the last listener did;
    /// `each` is handed every listener's.
    double Change(const std::function<void(double)>& each = [](double) {}) {
        const auto start = Clock::now();
        m_asker.Send(m_isPaused ? kPlay : kPause);
        m_isPaused = !m_isPaused;
        double last = 0;
        std::size_t missing = m_listeners.All().size();
        for (SpinLimit limit; missing > 0; limit.Spin()) {
            m_listeners.Poll([&](const Connection&, std::size_t lines) {
                last = Microseconds(Clock::now() - start).count();
                each(last);
                if (lines > missing) {
                    throw std::runtime_error("a client was told more than there was to tell");
                }
                missing -= lines;
            });
        }
        m_asker.Await(2);  // its own notification and the reply
        return last;
    }

  private:
    Connections m_listeners;
    Connection m_asker;
    bool m_isPaused = false;
};

Figures FanOutTo(const Server& server, std::size_t listeners, const std::string& how = "") {
    constexpr int kChanges = 400;
    Audience audience(server, listeners);
    std::vector<double> delays;
    const double before = server.CpuMicroseconds();
    for (int i = 0; i < kChanges; ++i) {
        delays.push_back(audience.Change());
    }
    const double cpu = (server.CpuMicroseconds() - before) / kChanges;
    const std::string row = "fan-out-" + how + std::to_string(listeners);
    return {{row + "-delay", Median(std::move(delays))}, {row + "-cpu", cpu}};
}

}  // namespace

Figures MeasureFanOut(const Server& server) {
    Figures figures = FanOutTo(server, 64);
    for (Figure& figure : FanOutTo(server, 1)) {
        figures.push_back(std::move(figure));
    }
    return figures;
}

Figures MeasureFanOutFromThread(const Program& program) {
    const Server server(program, kOwnRun, {{"QUICK_PLAYER_THREAD", "own"}});
    server.AwaitPlayer();
    server.AwaitRest();
    Figures figures = FanOutTo(server, 64, "thread-");
    for (Figure& figure : FanOutTo(server, 1, "thread-")) {
        figures.push_back(std::move(figure));
    }
    return figures;
}

Figures MeasureChanges(const Server& server) {
    constexpr int kChanges = 200;
    constexpr std::chrono::milliseconds kApart(2);
    Audience audience(server, 16);
    std::vector<double> delays;
    auto next = Clock::now();
    for (int i = 0; i < kChanges; ++i) {
        while (Clock::now() < next) {
        }
        next += kApart;
        audience.Change([&](double delay) { delays.push_back(delay); });
    }
    return {{"changes-16", Median(std::move(delays))}};
}

}  // namespace Bench
