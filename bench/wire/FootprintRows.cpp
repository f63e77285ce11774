// What a run of the service costs that nobody asks anything of.
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>

#include "bench/wire/Rows.h"

namespace Bench {
namespace {

const Environment kNoPlayer{{"QUICK_PLAYER", "none"}};

/// Of a line in a file of /proc, in MiB.
double Mebibytes(const std::string& path, const std::string& key) {
    std::ifstream file(path);
    for (std::string word; file >> word;) {
        double kibibytes = 0;
        if (word == key && file >> kibibytes) {
            return kibibytes / 1024;
        }
    }
    throw std::runtime_error(path + " has no " + key);
}

bool IsLibrary(const std::string& path) {
    return path.starts_with('/') && path.find(".so") != std::string::npos;
}

double MappedLibraries(const Server& server) {
    std::set<std::string> libraries;
    std::ifstream maps(server.Proc() + "/maps");
    for (std::string word; maps >> word;) {
        if (IsLibrary(word)) {
            libraries.insert(word);
        }
    }
    return static_cast<double>(libraries.size());
}

/// Those that the loader maps, before anything of the program runs.
double LoadedLibraries(const Program& program) {
    const std::string command =
        "LD_TRACE_LOADED_OBJECTS=1 LD_LIBRARY_PATH=" QUICK_PLAYER_FOLDER " '" + program.Path() + "'";
    FILE* output = popen(command.c_str(), "r");
    double count = 0;
    char line[1024];
    while (output != nullptr && fgets(line, sizeof line, output) != nullptr) {
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            count += IsLibrary(word) ? 1 : 0;
        }
    }
    if (output == nullptr || pclose(output) != 0) {
        throw std::runtime_error("the loader does not tell the libraries of " + program.Path());
    }
    return count;
}

std::size_t CountThreads(const Server& server) {
    const std::filesystem::directory_iterator threads(server.Proc() + "/task");
    return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

/// Of all its threads.
long VoluntarySwitches(const Server& server) {
    long sum = 0;
    for (const auto& thread : std::filesystem::directory_iterator(server.Proc() + "/task")) {
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

double SwitchesASecond(const Program& program, const Environment& environment, bool hasPlayer) {
    constexpr int kSeconds = 20;
    const Server server(program, kOwnRun, environment);
    if (hasPlayer) {
        server.AwaitPlayer();
    }
    server.AwaitRest();
    const long before = VoluntarySwitches(server);
    std::this_thread::sleep_for(std::chrono::seconds(kSeconds));
    return static_cast<double>(VoluntarySwitches(server) - before) / kSeconds;
}

double StopWith(const Program& program, const Environment& environment, bool hasPlayer) {
    Server server(program, kOwnRun, environment);
    if (hasPlayer) {
        server.AwaitPlayer();
    }
    server.AwaitRest();  // a signal before the main loop runs is another matter
    return server.StopMilliseconds();
}

}  // namespace

Figures MeasureStart(const Program& program) {
    return {{"start", Server(program, kOwnRun, kNoPlayer).StartMilliseconds()}};
}

Figures MeasureStop(const Program& program) {
    return {{"stop-none", StopWith(program, kNoPlayer, false)}, {"stop-player", StopWith(program, {}, true)}};
}

Figures MeasureFootprint(const Program& program) {
    const Server server(program, kOwnRun, kNoPlayer);
    server.AwaitRest();
    const std::string memory = server.Proc() + "/smaps_rollup";
    return {{"memory-pss", Mebibytes(memory, "Pss:")},
            {"memory-anonymous", Mebibytes(memory, "Anonymous:")},
            {"libraries-rest", MappedLibraries(server)},
            {"libraries-loaded", LoadedLibraries(program)},
            {"threads-rest", static_cast<double>(CountThreads(server))}};
}

Figures MeasureWakeups(const Program& program) {
    // Without the quick player's folder the loader takes the simulated player's library.
    const auto simulated = [](const char* device) {
        return Environment{{"LD_LIBRARY_PATH", ""}, {"DEVICE_SIMULATOR_DEVICE", device}};
    };
    return {{"wakeups-player", SwitchesASecond(program, {}, true)},
            {"wakeups-none", SwitchesASecond(program, kNoPlayer, false)},
            {"wakeups-simulated-player", SwitchesASecond(program, simulated("iap"), true)},
            {"wakeups-simulated-none", SwitchesASecond(program, simulated("none"), false)}};
}

}  // namespace Bench
