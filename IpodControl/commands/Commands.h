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

/// `plays`: the last of `names`.
int RunBrowse(const Settings& settings, const std::vector<std::string>& names, bool plays);
/// For completion: the first names in the list that `names` lead to which begin with `begin`, in upper or
/// lower case; none where there is no such list or no service.
std::vector<std::string> NamesBelow(const Settings& settings, const std::vector<std::string>& names,
                                    const std::string& begin);

/// Ends after `count` notifications, and after `time`.
int RunWatch(const Settings& settings, std::optional<std::int64_t> count,
             std::optional<std::chrono::milliseconds> time);

/// `file`: "-" is standard output.
int RunArt(const Settings& settings, const std::string& file, bool isDelayed);

/// The words that RunWait takes.
inline constexpr const char* kWaitStates = "connected|disconnected|ready|track|playing|paused|stopped";
int RunWait(const Settings& settings, const std::string& state);

/// `text`: what is sent; "-": what standard input brings.
int RunRaw(const Settings& settings, const std::string& text);

}  // namespace IpodControl
