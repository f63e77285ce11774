// Changes, and when clients know of them.
#include "bench/wire/Connection.h"
#include "bench/wire/Protocol.h"
#include "bench/wire/Rows.h"

namespace Bench {
namespace {

/// Who asks for changes, and who else hears of them.
class Audience {
  public:
    Audience(const Server& server, std::size_t listeners)
        : m_listeners(server.Address(), listeners), m_asker(server.Address()) {
        // From the one state into the other and back, whichever it was: what follows is a change each time.
        m_asker.Ask(kRequest);
        m_asker.Send(kPause);
        Settle();
        m_asker.Send(kPlay);
        Settle();
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
                missing -= lines;
            });
        }
        m_asker.Await(2);  // its own notification and the reply
        return last;
    }

  private:
    void Settle() const {
        const auto begin = Clock::now();
        for (auto heard = begin; Clock::now() - heard < std::chrono::milliseconds(20);) {
            const bool isHeard = m_asker.Receive() > 0;
            m_listeners.Poll([&](const Connection&, std::size_t) { heard = Clock::now(); });
            heard = isHeard ? Clock::now() : heard;
        }
    }

    Connections m_listeners;
    Connection m_asker;
    bool m_isPaused = false;
};

Figures FanOutTo(const Server& server, std::size_t listeners) {
    constexpr int kChanges = 400;
    Audience audience(server, listeners);
    std::vector<double> delays;
    const double before = server.CpuMicroseconds();
    for (int i = 0; i < kChanges; ++i) {
        delays.push_back(audience.Change());
    }
    const double cpu = (server.CpuMicroseconds() - before) / kChanges;
    const std::string row = "fan-out-" + std::to_string(listeners);
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
