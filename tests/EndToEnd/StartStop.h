// Starts the service under load and stops it by a signal at a random moment.
#pragma once

#include <map>
#include <random>
#include <string>

#include "tests/EndToEnd/Deadline.h"

namespace EndToEnd {

class ServiceProcess;

/// Counts how often it ended in which way.
class StartStop {
  public:
    explicit StartStop(unsigned seed) : m_random(seed) {}

    /// The signal comes at or after the main loop's start: one is enough, and the status is 0.
    void RunAndStopInMainLoop();
    /// The signal comes at any moment before that: the status is 143 while no handler is in place. Once one
    /// is, the service either still stops in order or keeps waiting for a second signal, and then ends
    /// with 1.
    void RunAndStopEarly();
    /// The same, from the moment on in which the handler is in place.
    void RunAndStopOnceHandled();

    const std::map<std::string, int>& Outcomes() const { return m_outcomes; }
    /// Ends that must not be.
    int Failures() const { return m_failures; }

  private:
    void StopEarly(ServiceProcess& service, const std::string& situation);
    void Count(const std::string& situation, const std::string& outcome, bool isPromised);
    /// Up to `longest`, as many short ones as long ones: right behind a start there is most to go wrong.
    std::chrono::microseconds RandomDelay(std::chrono::microseconds longest);

    std::mt19937 m_random;
    Clock::duration m_timeToMainLoop = milliseconds{50};
    std::map<std::string, int> m_outcomes;
    int m_failures = 0;
};

}  // namespace EndToEnd
