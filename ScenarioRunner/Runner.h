// Takes the steps of a scenario.
#pragma once

#include <optional>

#include "ScenarioRunner/Report.h"
#include "ScenarioRunner/Scenario.h"
#include "ScenarioRunner/Session.h"

namespace ScenarioRunner {

struct RunOptions {
    double patience = 1;  ///< what the times of "within" are multiplied with
    bool goesOnOnFailure = false;
};

/// One thread uses it.
class Runner {
  public:
    Runner(Session& session, Report& report, RunOptions options)
        : m_session(session), m_report(report), m_options(options) {}

    /// Whether all held.
    bool Run(const Scenario& scenario);

  private:
    using Clock = std::chrono::steady_clock;

    /// False when the run is to end here.
    bool RunSteps(const std::vector<Step>& steps);
    bool RunStep(const Step& step);
    StepResult Do(const Command& command, const Step& step);
    StepResult Do(const Request& request, const Step& step);
    StepResult Do(const ExpectReply& expect, const Step& step);
    StepResult Do(const Until& until, const Step& step);
    StepResult Do(const ExpectEvent& event, const Step& step);
    StepResult Do(const Sleep& sleep, const Step& step);
    StepResult Do(const Heading&, const Step&) { return {}; }
    StepResult Do(const Repeat&, const Step&) { return {}; }

    std::optional<IpodControl::Problem> Send(const Command& command);
    std::optional<IpodControl::Problem> Send(const Request& request);
    /// The steps that do something stand in groups, between those that expect; a group begins a window.
    std::optional<IpodControl::Problem> BeginGroup();
    StepResult Compare(const ExpectReply& expect) const;
    IpodControl::Deadline In(std::chrono::milliseconds time) const;

    Session& m_session;
    Report& m_report;
    const RunOptions m_options;
    Summary m_summary;
    bool m_isInGroup = false;
    bool m_isConnected = true;
    const Command* m_lastCommand = nullptr;
    const Request* m_lastRequest = nullptr;
    bool m_lastWasCommand = false;
    Json::Value m_answer;  // of the last command
    IpodControl::Reply m_reply;
};

}  // namespace ScenarioRunner
