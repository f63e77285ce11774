// What a run tells: a line a step, and a summary.
#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>

#include "ScenarioRunner/Scenario.h"

namespace ScenarioRunner {

struct StepResult {
    bool isOk = false;
    std::chrono::microseconds time{};
    std::string expected;  ///< of a step that failed
    std::string came;
};

struct Summary {
    std::size_t ok = 0;
    std::size_t failed = 0;
    bool isWhole = false;  ///< whether the run came to the file's end
    std::chrono::microseconds time{};
};

class Report {
  public:
    virtual ~Report() = default;
    virtual void Begin(const Scenario& scenario) = 0;
    virtual void Tell(const Heading& heading) = 0;
    virtual void Tell(const Step& step, const StepResult& result) = 0;
    virtual void End(const Scenario& scenario, const Summary& summary) = 0;
};

/// For people.
std::unique_ptr<Report> MakeTextReport(std::ostream& out);
/// For programs: an object a line.
std::unique_ptr<Report> MakeJsonReport(std::ostream& out);

}  // namespace ScenarioRunner
