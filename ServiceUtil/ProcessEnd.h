// The end of a process whose orderly end may hang.
#pragma once

#include <chrono>

/// Ends the process with `status`, without destructors, once `time` has passed, unless it has ended by then;
/// at once when nothing can be armed. For use before exit(), which waits for every stream's lock: a thread
/// that writes to a full pipe never gives its stream's up. Any thread.
void EndProcessAfter(std::chrono::milliseconds time, int status);
