// Programs that this process starts for itself.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

/// How far a program is from the terminal of the one that starts it. Its keys' signals reach neither.
enum class ChildPlace {
    ProcessGroup,  ///< a group of its own in the same session
    Session,       ///< a session of its own
};

/// Starts `words`, of which the first is the program's path, or its name if it is to be looked for. No signal
/// is blocked, ignored or caught in it; `standardInput` is that, what it prints goes to standard error, and
/// no other descriptor is passed on. 0 with the process in `child`, or the errno that it failed with.
int StartChild(std::vector<std::string> words, int standardInput, ChildPlace place, pid_t& child);

/// Waits for the end of `child`; its status as waitpid has it.
int WaitForChild(pid_t child);

/// Makes an end of it at once, and waits for that.
int EndChild(pid_t child);
