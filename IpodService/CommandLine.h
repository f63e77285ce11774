// The service's switches.
#pragma once

#include <string>

class CLogger;

inline constexpr const char* kDefaultAddress = "127.0.0.1";

/// Takes the switches in their order, from argv[1] on, and applies those of the log to `logger` as they come.
/// Unknown arguments are ignored. Returns the address to listen on, `kDefaultAddress` unless one is given.
/// Main thread.
std::string ApplyCommandLine(int argc, const char* const* argv, CLogger& logger);
