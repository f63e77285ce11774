#include "ScenarioRunner/Runner.h"

#include <utility>

#include "IpodControl/Message.h"

namespace ScenarioRunner {

using namespace std::chrono_literals;
using IpodControl::Problem;
using IpodControl::ToLine;

namespace {

constexpr auto kAnswerPatience = 10s;
constexpr auto kUntilPause = 50ms;

StepResult Fine() {
    StepResult result;
    result.isOk = true;
    return result;
}

StepResult Failed(std::string expected, std::string came) {
    StepResult result;
    result.expected = std::move(expected);
    result.came = std::move(came);
    return result;
}

std::string Short(const std::string& text) {
    constexpr std::size_t kMost = 400;
    return text.size() <= kMost ? text
                                : text.substr(0, kMost) + "... (" + std::to_string(text.size()) + " bytes)";
}

std::string ToText(const std::vector<Condition>& conditions) {
    std::string text;
    for (const Condition& condition : conditions) {
        text += (text.empty() ? "" : " ") + ToText(condition);
    }
    return text;
}

std::string ToText(const std::vector<Session::Event>& events, const char* nothing) {
    std::string text;
    for (const Session::Event& event : events) {
        text += (text.empty() ? "" : "; ") + event.name + ' ' + Short(ToLine(event.content));
    }
    return text.empty() ? nothing : text;
}

Json::Value ToJson(const IpodControl::RpcError& error) {
    Json::Value value;
    value["code"] = Json::Int64{error.code};
    value["message"] = error.message;
    return value;
}

std::string ToText(const IpodControl::Reply& reply) {
    if (reply.error) {
        return "the error " + ToLine(ToJson(*reply.error));
    }
    return reply.hasResult ? Short(ToLine(reply.result)) : "an answer without a result";
}

}  // namespace

bool Runner::Run(const Scenario& scenario) {
    const auto begin = Clock::now();
    m_summary = {};
    m_isInGroup = false;
    m_lastCommand = nullptr;
    m_lastRequest = nullptr;
    m_answer = {};
    m_reply = {};
    m_report.Begin(scenario);
    m_summary.isWhole = RunSteps(scenario.steps);
    m_summary.time = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    m_report.End(scenario, m_summary);
    return m_summary.isWhole && m_summary.failed == 0;
}

bool Runner::RunSteps(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
        if (const auto* repeat = std::get_if<Repeat>(&step.action)) {
            for (std::size_t i = 0; i < repeat->times; ++i) {
                if (!RunSteps(repeat->steps)) {
                    return false;
                }
            }
        } else if (const auto* heading = std::get_if<Heading>(&step.action)) {
            m_report.Tell(*heading);
        } else if (!RunStep(step)) {
            return false;
        }
    }
    return true;
}

bool Runner::RunStep(const Step& step) {
    const auto begin = Clock::now();
    StepResult result = std::visit([&](const auto& action) { return Do(action, step); }, step.action);
    result.time = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - begin);
    ++(result.isOk ? m_summary.ok : m_summary.failed);
    m_report.Tell(step, result);
    return m_isConnected && (result.isOk || m_options.goesOnOnFailure);
}

StepResult Runner::Do(const Command& command, const Step& step) {
    auto problem = BeginGroup();
    problem = problem ? problem : Send(command);
    if (problem) {
        return Failed("an answer", problem->text);
    }
    const bool isOk = m_answer["ok"] == true;
    return isOk || step.mayFail ? Fine() : Failed("\"ok\":true", Short(ToLine(m_answer)));
}

StepResult Runner::Do(const Request& request, const Step& step) {
    auto problem = BeginGroup();
    problem = problem ? problem : Send(request);
    if (problem) {
        return Failed("an answer", problem->text);
    }
    return !m_reply.error || step.mayFail ? Fine() : Failed("a result", ToText(m_reply));
}

StepResult Runner::Do(const ExpectReply& expect, const Step&) {
    m_isInGroup = false;
    return Compare(expect);
}

StepResult Runner::Do(const Until& until, const Step&) {
    m_isInGroup = false;
    const auto deadline = In(until.within);
    for (;;) {
        const StepResult result = Compare(until.reply);
        if (result.isOk || Clock::now() >= deadline) {
            return result;
        }
        std::optional<Problem> problem;
        if (const auto passed = m_session.Pass(IpodControl::In(kUntilPause)); !passed) {
            m_isConnected = false;
            problem = passed.Why();
        }
        const bool isCommand = until.reply.subject == Subject::Answer ||
                               (until.reply.subject == Subject::Error && m_lastWasCommand);
        if (isCommand ? m_lastCommand == nullptr : m_lastRequest == nullptr) {
            // It stands in a repeat of no times.
            return result;
        }
        problem = problem ? problem : (isCommand ? Send(*m_lastCommand) : Send(*m_lastRequest));
        if (problem) {
            return Failed(ToText(until.reply.conditions), problem->text);
        }
    }
}

StepResult Runner::Do(const ExpectEvent& event, const Step&) {
    m_isInGroup = false;
    const auto deadline = event.isUnwanted ? IpodControl::In(event.time) : In(event.time);
    const auto hasCome = m_session.Await(event.isCall, event.name, event.conditions, deadline);
    const std::string what = event.name + (event.conditions.empty() ? "" : " ") + ToText(event.conditions);
    if (!hasCome) {
        m_isConnected = false;
        return Failed(what, hasCome.Why().text);
    }
    if (*hasCome != event.isUnwanted) {
        return Fine();
    }
    const std::vector<Session::Event> recent = m_session.Recent(event.isCall);
    return Failed((event.isUnwanted ? "no " : "") + what,
                  ToText(recent, event.isCall ? "no call" : "no notification"));
}

StepResult Runner::Do(const Sleep& sleep, const Step&) {
    if (const auto passed = m_session.Pass(IpodControl::In(sleep.time)); !passed) {
        m_isConnected = false;
        return Failed("nothing", passed.Why().text);
    }
    return Fine();
}

std::optional<Problem> Runner::Send(const Command& command) {
    m_lastCommand = &command;
    m_lastWasCommand = true;
    // A "wait" says itself how long it may take.
    const Json::Value& timeout = command.object["timeout"];
    const std::chrono::milliseconds wait{timeout.isUInt() ? timeout.asUInt() : 5000};
    auto answer = m_session.Command(command.object, In(kAnswerPatience + wait));
    if (!answer) {
        m_isConnected = false;
        return answer.Why();
    }
    m_answer = std::move(*answer);
    return std::nullopt;
}

std::optional<Problem> Runner::Send(const Request& request) {
    m_lastRequest = &request;
    m_lastWasCommand = false;
    auto reply = m_session.Request(request.method, request.params, In(kAnswerPatience));
    if (!reply) {
        m_isConnected = false;
        return reply.Why();
    }
    m_reply = std::move(*reply);
    return std::nullopt;
}

std::optional<Problem> Runner::BeginGroup() {
    if (std::exchange(m_isInGroup, true)) {
        return std::nullopt;
    }
    if (const auto begun = m_session.BeginWindow(); !begun) {
        m_isConnected = false;
        return begun.Why();
    }
    return std::nullopt;
}

StepResult Runner::Compare(const ExpectReply& expect) const {
    if (expect.subject == Subject::Answer || (expect.subject == Subject::Error && m_lastWasCommand)) {
        const bool isWanted = (m_answer["ok"] == true) == (expect.subject == Subject::Answer);
        return isWanted && AllHold(expect.conditions, m_answer)
                   ? Fine()
                   : Failed(isWanted ? ToText(expect.conditions) : "a refusal", Short(ToLine(m_answer)));
    }
    const bool isError = expect.subject == Subject::Error;
    const bool isWanted = isError ? m_reply.error.has_value() : m_reply.hasResult;
    const Json::Value whole = isError && isWanted ? ToJson(*m_reply.error) : m_reply.result;
    if (isWanted && AllHold(expect.conditions, whole)) {
        return Fine();
    }
    return Failed((isError ? "the error " : "") + ToText(expect.conditions), ToText(m_reply));
}

IpodControl::Deadline Runner::In(std::chrono::milliseconds time) const {
    return Clock::now() + std::chrono::duration_cast<Clock::duration>(time * m_options.patience);
}

}  // namespace ScenarioRunner
