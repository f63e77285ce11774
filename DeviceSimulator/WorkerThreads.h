// The same work on several threads.
#pragma once

#include <cstddef>
#include <functional>

namespace DeviceSimulator {

/// Runs `work` on one thread for each processor, the caller's among them, and on `most` at most; returns when
/// it has returned on all of them. What it throws on one of them is thrown here.
void RunOnThreads(std::size_t most, const std::function<void()>& work);

}  // namespace DeviceSimulator
