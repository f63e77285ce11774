// From what was typed to the subcommand that is meant.
#pragma once

#include <string>
#include <vector>

namespace IpodControl {

/// Runs the subcommand that is meant, and gives back its exit status. `arguments`: without the program's
/// name. Exceptions of the parser end here.
int RunCommandLine(const std::vector<std::string>& arguments);

}  // namespace IpodControl
