// The service's switches.
#pragma once

#include <optional>
#include <string>

class CLogger;

inline constexpr const char* kDefaultAddress = "127.0.0.1";

/// What to print, and to end with, in place of running: for "--version" and "--help" where that is the only
/// argument. Beside others each is ignored like any unknown one, so that no command line of old changes.
std::optional<std::string> CommandLineAnswer(int argc, const char* const* argv);

/// Takes the switches in their order, from argv[1] on, and applies those of the log to `logger` as they come.
/// Unknown arguments are ignored. Returns the address to listen on, `kDefaultAddress` unless one is given.
/// Main thread.
std::string ApplyCommandLine(int argc, const char* const* argv, CLogger& logger);
