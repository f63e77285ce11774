// Measures the service over the wire beside as little as a server can do (Floor.cpp), by turns in one run. In
// the sandbox, as it runs the service:
//
//     tests/EndToEnd/sandbox.sh <build folder>/bench/bench_wire [--rounds N] [--rows WORD,...] [--service
//     PATH]...
//
// --rows takes the beginnings of the rows' names. PATH is absolute. With more than one service, all of them
// take turns; what lies outside the build folder is shown to the sandbox by SANDBOX_SHOW=FOLDER.
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "bench/Result.h"
#include "bench/wire/Connection.h"
#include "bench/wire/Rows.h"

namespace Bench {
namespace {

struct Options {
    int rounds = 5;
    std::vector<std::string> rows;
    std::vector<std::string> services;
};

enum class Rounds { kAll, kOne };  ///< one: it takes long, or tells what a long while has had of the worst

struct Measurement {
    std::vector<std::string_view> rows;
    Figures (*ofRun)(const Program&) = nullptr;    ///< starts what it measures
    Figures (*ofServer)(const Server&) = nullptr;  ///< of one that runs
    bool isAlsoOfFloor = true;
    Rounds rounds = Rounds::kAll;
};

/// Those with runs of their own come first: a second run of a program halves what its libraries cost the
/// other.
const std::vector<Measurement>& Measurements() {
    static const std::vector<Measurement> all{
        {{"memory-pss", "memory-anonymous", "libraries-rest", "libraries-loaded", "threads-rest"},
         MeasureFootprint,
         nullptr,
         false},
        {{"start"}, MeasureStart},
        {{"stop-none", "stop-player"}, MeasureStop, nullptr, false},
        {{"fan-out-thread-64-delay", "fan-out-thread-64-cpu", "fan-out-thread-1-delay",
          "fan-out-thread-1-cpu"},
         MeasureFanOutFromThread},
        {{"event-median", "event-worst", "event-worst-beside"}, MeasureEvents, nullptr, false, Rounds::kOne},
        {{"wakeups-player", "wakeups-none", "wakeups-simulated-player", "wakeups-simulated-none"},
         MeasureWakeups,
         nullptr,
         false,
         Rounds::kOne},
        {{"request-cpu", "round-trip"}, nullptr, MeasureRequests},
        {{"requests-8", "requests-64"}, nullptr, MeasureThroughput},
        {{"connect"}, nullptr, MeasureConnect},
        {{"fan-out-64-delay", "fan-out-64-cpu", "fan-out-1-delay", "fan-out-1-cpu"}, nullptr, MeasureFanOut},
        {{"changes-16"}, nullptr, MeasureChanges},
        {{"slow-readers-1", "slow-readers-6", "slow-readers-64"},
         nullptr,
         MeasureBesideSlowReaders,
         false,
         Rounds::kOne},
    };
    return all;
}

std::vector<std::string> Split(std::string_view text) {
    std::vector<std::string> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(','), text.size());
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

Options Read(int count, char** words) {
    Options options;
    for (int i = 1; i < count; i += 2) {
        const std::string_view name = words[i];
        if (i + 1 == count) {
            throw std::runtime_error("a value is missing behind " + std::string(name));
        }
        const char* value = words[i + 1];
        if (name == "--rounds") {
            options.rounds = std::max(std::atoi(value), 1);
        } else if (name == "--rows") {
            options.rows = Split(value);
        } else if (name == "--service") {
            options.services.emplace_back(value);
        } else {
            throw std::runtime_error("unknown: " + std::string(name));
        }
    }
    if (options.services.empty()) {
        options.services.emplace_back(IPOD_SERVICE);
    }
    return options;
}

bool IsWanted(const Options& options, std::string_view row) {
    return options.rows.empty() ||
           std::any_of(options.rows.begin(), options.rows.end(),
                       [&](const std::string& word) { return row.starts_with(word); });
}

bool IsWanted(const Options& options, const Measurement& measurement) {
    return std::any_of(measurement.rows.begin(), measurement.rows.end(),
                       [&](std::string_view row) { return IsWanted(options, row); });
}

/// The medians of a row's rounds, a value for each program; the first is the floor.
class Results {
  public:
    void Add(const Figure& figure, std::size_t program) {
        auto& programs = m_values[figure.row];
        programs.resize(std::max(programs.size(), program + 1));
        programs[program].push_back(figure.value);
    }
    void Show(const std::string& row) const {
        if (m_values.count(row) == 0) {
            return;
        }
        const auto& programs = m_values.at(row);
        const std::optional<double> floor =
            programs[0].empty() ? std::nullopt : std::optional(Median(programs[0]));
        if (programs.size() == 2) {
            Report(row, Median(programs[1]), floor);
            return;
        }
        std::printf("%-32s", row.c_str());
        floor ? std::printf(" %12.2f", *floor) : std::printf(" %12s", "");
        for (std::size_t i = 1; i < programs.size(); ++i) {
            const double value = Median(programs[i]);
            std::printf(" %12.2f", value);
            floor ? std::printf(" %8.2f", value / *floor) : std::printf(" %8s", "");
        }
        std::printf("\n");
        std::fflush(stdout);
    }

  private:
    std::map<std::string, std::vector<std::vector<double>>> m_values;
};

/// The log grows with every request, in memory.
void EmptyLog() {
    if (truncate("/home/root/ipod.log", 0) != 0 && errno != ENOENT) {
        std::perror("the log");
    }
}

class Candidates {
  public:
    explicit Candidates(const std::vector<std::string>& services) : m_programs{Program::Floor()} {
        for (const std::string& service : services) {
            m_programs.push_back(Program::Service(service));
        }
    }

    /// They take turns, so that whatever else the machine does meets all of them.
    void Round(const Measurement& measurement, Results& results) {
        if (measurement.ofServer != nullptr && m_servers.empty()) {
            StartServers();
        }
        for (std::size_t i = measurement.isAlsoOfFloor ? 0 : 1; i < m_programs.size(); ++i) {
            for (const Figure& figure : measurement.ofServer != nullptr ? measurement.ofServer(*m_servers[i])
                                                                        : measurement.ofRun(m_programs[i])) {
                results.Add(figure, i);
            }
            EmptyLog();
        }
    }

  private:
    void StartServers() {
        for (const Program& program : m_programs) {
            m_servers.push_back(std::make_unique<Server>(program, static_cast<unsigned>(m_servers.size())));
            m_servers.back()->AwaitPlayer();
        }
        for (const auto& server : m_servers) {
            server->AwaitRest();
        }
    }

    std::vector<Program> m_programs;
    std::vector<std::unique_ptr<Server>> m_servers;  // none yet, or one for each program
};

void Run(const Options& options) {
    Candidates candidates(options.services);
    for (const Measurement& measurement : Measurements()) {
        if (!IsWanted(options, measurement)) {
            continue;
        }
        Results results;
        for (int round = 0; round < (measurement.rounds == Rounds::kOne ? 1 : options.rounds); ++round) {
            candidates.Round(measurement, results);
        }
        for (const std::string_view row : measurement.rows) {
            if (IsWanted(options, row)) {
                results.Show(std::string(row));
            }
        }
    }
}

void RunOnFirstCore() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(0, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}

}  // namespace
}  // namespace Bench

int main(int count, char** words) {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr) {
        std::fputs("Closing a device deletes files in / and /home/root: run this in the sandbox.\n", stderr);
        return 2;
    }
    try {
        Bench::RunOnFirstCore();
        Bench::Run(Bench::Read(count, words));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
