// Measures the service over the wire beside as little as a server can do (Floor.cpp), by turns in one run. In
// the sandbox, as it runs the service:
//
//     tests/EndToEnd/sandbox.sh <build folder>/bench/bench_wire [--rounds N] [--rows WORD,...] [--json FILE]
//                               [--service PATH]...
//
// --rows takes the beginnings of the rows' names. With more than one service, all of them take turns; what
// lies outside the build folder is shown to the sandbox by SANDBOX_SHOW=FOLDER.
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string_view>

#include "bench/wire/Connection.h"
#include "bench/wire/Rows.h"

namespace Bench {
namespace {

struct Options {
    int rounds = 5;
    std::vector<std::string> rows;
    std::vector<std::string> services;
    std::string json;
};

struct Measurement {
    std::vector<std::string_view> rows;
    Figures (*run)(const Server&);
};

const std::vector<Measurement> kMeasurements{
    {{"request-cpu", "round-trip"}, MeasureRequests},
    {{"requests-8", "requests-64"}, MeasureThroughput},
    {{"connect"}, MeasureConnect},
    {{"fan-out-64-delay", "fan-out-64-cpu", "fan-out-1-delay", "fan-out-1-cpu"}, MeasureFanOut},
    {{"changes-16"}, MeasureChanges},
};

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
        } else if (name == "--json") {
            options.json = value;
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

/// The medians of a row's rounds, a value for each server.
class Results {
  public:
    void Add(const Figure& figure, std::size_t server) {
        if (m_values.count(figure.row) == 0) {
            m_order.push_back(figure.row);
        }
        auto& servers = m_values[figure.row];
        servers.resize(std::max(servers.size(), server + 1));
        servers[server].push_back(figure.value);
    }
    void Print(const Options& options) const {
        std::printf("%-20s %10s", "", "floor");
        for (std::size_t i = 1; i <= options.services.size(); ++i) {
            std::printf(" %10s %zu %6s", "service", i, "ratio");
        }
        std::printf("\n");
        for (const std::string& row : m_order) {
            const double floor = Value(row, 0);
            std::printf("%-20s %10.1f", row.c_str(), floor);
            for (std::size_t i = 1; i <= options.services.size(); ++i) {
                std::printf(" %12.1f %6.2f", Value(row, i), Value(row, i) / floor);
            }
            std::printf("\n");
        }
    }
    /// Of the first service.
    void Write(const std::string& path) const {
        std::ofstream file(path, std::ios::app);
        for (const std::string& row : m_order) {
            file << "{\"row\":\"" << row << "\",\"value\":" << Value(row, 1) << ",\"floor\":" << Value(row, 0)
                 << "}\n";
        }
    }

  private:
    double Value(const std::string& row, std::size_t server) const {
        return Median(m_values.at(row).at(server));
    }

    std::vector<std::string> m_order;
    std::map<std::string, std::vector<std::vector<double>>> m_values;
};

/// The log grows with every request, in memory.
void EmptyLog() {
    if (truncate("/home/root/ipod.log", 0) != 0) {
        std::perror("the log");
    }
}

void Run(const Options& options) {
    std::vector<Server> servers;
    servers.push_back(Server::Floor());
    for (const std::string& service : options.services) {
        servers.push_back(Server::Service(service, static_cast<unsigned>(servers.size() - 1)));
        servers.back().AwaitPlayer();
    }
    Results results;
    for (int round = 0; round < options.rounds; ++round) {
        for (const Measurement& measurement : kMeasurements) {
            if (std::none_of(measurement.rows.begin(), measurement.rows.end(),
                             [&](std::string_view row) { return IsWanted(options, row); })) {
                continue;
            }
            for (std::size_t i = 0; i < servers.size(); ++i) {
                for (const Figure& figure : measurement.run(servers[i])) {
                    results.Add(figure, i);
                }
                EmptyLog();
            }
        }
    }
    results.Print(options);
    if (!options.json.empty()) {
        results.Write(options.json);
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
