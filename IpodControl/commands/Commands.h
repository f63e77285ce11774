// The subcommands. Each prints, complains, and answers with an exit status.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "IpodControl/Client.h"
#include "IpodControl/commands/Method.h"
#include "IpodControl/commands/Output.h"

namespace IpodControl {

/// What holds for every subcommand.
struct Settings {
    Endpoint endpoint;
    bool json = false;
    std::optional<std::chrono::milliseconds> givenTimeout;

    std::chrono::milliseconds Timeout() const { return givenTimeout.value_or(std::chrono::seconds(5)); }
};

int RunCall(const Settings& settings, const Method& method, const Json::Value& params);

int RunStatus(const Settings& settings);

struct BrowseOptions {
    std::vector<std::string> names;
    bool plays = false;
};
int RunBrowse(const Settings& settings, const BrowseOptions& options);
/// For completion: the first names in the list that `names` lead to which begin with `begin`, in upper or
/// lower case; none where there is no such list or no service.
std::vector<std::string> NamesBelow(const Settings& settings, const std::vector<std::string>& names,
                                    const std::string& begin);

struct WatchOptions {
    std::optional<std::int64_t> count;              ///< notifications
    std::optional<std::chrono::milliseconds> time;  ///< from the start
};
int RunWatch(const Settings& settings, const WatchOptions& options);

struct ArtOptions {
    std::string file;  ///< "-": standard output
    bool isDelayed = false;
};
int RunArt(const Settings& settings, const ArtOptions& options);

/// The words that RunWait takes.
inline constexpr const char* kWaitStates = "connected|disconnected|ready|track|playing|paused|stopped";
int RunWait(const Settings& settings, const std::string& state);

/// `text`: what is sent; "-": what standard input brings.
int RunRaw(const Settings& settings, const std::string& text);

}  // namespace IpodControl
