#include "ScenarioRunner/ScenarioParser.h"

#include <algorithm>
#include <utility>

#include "ScenarioRunner/LineReader.h"

namespace ScenarioRunner {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kUsualPatience = 5s;
constexpr std::size_t kDeepestRepeat = 8;
constexpr std::size_t kMostFaults = 50;

Command ReadCommand(LineReader& line) {
    Command command;
    command.column = line.Column();
    if (line.Peek().front() == '{') {
        command.object = line.Value();
        return command;
    }
    command.object["command"] = line.Name("a step");
    while (!line.IsAtEnd()) {
        const std::size_t column = line.Column();
        Condition member = line.Pair(false);
        if (command.object.isMember(member.path)) {
            line.Complain("\"" + member.path + "\" stands here twice", column);
        }
        command.members.emplace_back(member.path, column);
        command.object[member.path] = std::move(member.value);
    }
    return command;
}

Request ReadRequest(LineReader& line) {
    Request request{line.Name("the method"), {}};
    const std::string_view next = line.Peek();
    if (!next.empty() && (next.front() == '{' || next.front() == '[')) {
        request.params = line.Value();
        return request;
    }
    while (!line.IsAtEnd()) {
        Condition member = line.Pair(false);
        request.params[member.path] = std::move(member.value);
    }
    return request;
}

std::vector<Condition> ReadConditions(LineReader& line) {
    std::vector<Condition> conditions;
    while (!line.IsAtEnd() && line.Peek() != "within" && line.Peek() != "for") {
        conditions.push_back(line.Pair(true));
    }
    return conditions;
}

std::chrono::milliseconds ReadPatience(LineReader& line) {
    return line.Take("within") ? line.Duration() : kUsualPatience;
}

ExpectReply ReadReply(LineReader& line) {
    ExpectReply reply;
    if (line.Take("answer")) {
        reply.subject = Subject::Answer;
    } else if (line.Take("error")) {
        reply.subject = Subject::Error;
    } else if (!line.Take("result")) {
        line.Complain("this must be result, error, answer, notification, call or no");
    }
    reply.conditions = ReadConditions(line);
    return reply;
}

std::optional<ExpectEvent> ReadEvent(LineReader& line) {
    ExpectEvent event;
    event.isUnwanted = line.Take("no");
    event.isCall = line.Take("call");
    if (!event.isCall && !line.Take("notification")) {
        if (event.isUnwanted) {
            line.Complain("this must be notification or call");
        }
        return std::nullopt;
    }
    event.name = line.Name("the name");
    event.conditions = ReadConditions(line);
    if (event.isUnwanted && !line.Take("for")) {
        line.Complain("\"for\" and a time are missing");
    }
    event.time = event.isUnwanted ? line.Duration() : ReadPatience(line);
    return event;
}

Until ReadUntil(LineReader& line) {
    Until until;
    until.reply = ReadReply(line);
    if (until.reply.conditions.empty()) {
        line.Complain("what is to hold is missing");
    }
    until.within = ReadPatience(line);
    return until;
}

decltype(Step::action) ReadAction(LineReader& line) {
    for (const bool isTitle : {true, false}) {
        if (line.Take(isTitle ? "title" : "step")) {
            const std::size_t column = line.Column();
            const Json::Value text = line.Value();
            if (!text.isString()) {
                line.Complain("a text is missing", column);
            }
            return Heading{isTitle, text.isString() ? text.asString() : ""};
        }
    }
    if (line.Take("expect")) {
        if (auto event = ReadEvent(line)) {
            return std::move(*event);
        }
        return ReadReply(line);
    }
    if (line.Take("until")) {
        return ReadUntil(line);
    }
    if (line.Take("request")) {
        return ReadRequest(line);
    }
    if (line.Take("sleep")) {
        return Sleep{line.Duration()};
    }
    if (line.Take("repeat")) {
        return Repeat{line.Count(), {}};
    }
    return ReadCommand(line);
}

class Parser {
  public:
    Parser(Scenario& scenario, std::vector<Fault>& faults) : m_faults(faults) {
        m_open.push_back({&scenario.steps, 0});
    }

    void Line(std::string_view text) {
        ++m_line;
        LineReader line(text);
        if (line.IsAtEnd()) {
            return;
        }
        const std::size_t column = line.Column();
        if (line.Take("end")) {
            Close(column);
        } else {
            const std::size_t end = text.find_last_not_of(" \t\r") + 1;
            Step step{m_line, std::string(text.substr(column - 1, end - column + 1)), ReadAction(line),
                      false};
            CheckOrder(step, line, column);
            Add(std::move(step), column);
        }
        if (!line.IsAtEnd()) {
            line.Complain("nothing more was expected here");
        }
        if (!line.Error().empty()) {
            Complain(line.ErrorColumn(), line.Error());
        }
    }

    void Finish() {
        if (m_open.size() > 1) {
            m_line = m_open.back().line;
            Complain(1, "this repeat has no end");
        }
    }

  private:
    struct Block {
        std::vector<Step>* steps;
        std::size_t line;
    };

    void Complain(std::size_t column, std::string text) {
        if (m_faults.size() < kMostFaults) {
            m_faults.push_back({m_line, column, std::move(text)});
        }
    }

    void Add(Step step, std::size_t column) {
        std::vector<Step>& steps = *m_open.back().steps;
        steps.push_back(std::move(step));
        if (auto* repeat = std::get_if<Repeat>(&steps.back().action)) {
            if (m_open.size() > kDeepestRepeat) {
                Complain(column, "repeats stand in each other at most 8 deep");
                return;
            }
            m_open.push_back({&repeat->steps, m_line});
        }
    }

    /// What looks at an answer needs one; and whoever looks at an error wants one.
    void CheckOrder(const Step& step, LineReader& line, std::size_t column) {
        const auto* expect = std::get_if<ExpectReply>(&step.action);
        const auto* until = std::get_if<Until>(&step.action);
        const ExpectReply* reply = until != nullptr ? &until->reply : expect;
        m_hasRequest = m_hasRequest || std::holds_alternative<Request>(step.action);
        m_hasCommand = m_hasCommand || std::holds_alternative<Command>(step.action);
        if (reply == nullptr) {
            return;
        }
        const bool isAnswer = reply->subject == Subject::Answer;
        if (isAnswer ? !m_hasCommand : !m_hasRequest && !(m_hasCommand && reply->subject == Subject::Error)) {
            line.Complain(isAnswer ? "no command stands before this" : "no request stands before this",
                          column);
        }
        std::vector<Step>& steps = *m_open.back().steps;
        if (reply->subject == Subject::Error && !steps.empty()) {
            steps.back().mayFail = true;
        }
    }

    void Close(std::size_t column) {
        if (m_open.size() == 1) {
            Complain(column, "no repeat is open here");
            return;
        }
        m_open.pop_back();
    }

    std::vector<Fault>& m_faults;
    std::vector<Block> m_open;  // outermost first; a block's steps stay where they are while it is open
    std::size_t m_line = 0;
    bool m_hasRequest = false;
    bool m_hasCommand = false;
};

const Json::Value* FindHelp(const Json::Value& help, const std::string& name) {
    const auto found = std::find_if(help.begin(), help.end(),
                                    [&](const Json::Value& entry) { return entry["command"] == name; });
    return found == help.end() ? nullptr : &*found;
}

void CheckCommand(const Command& command, std::size_t line, const Json::Value& help,
                  std::vector<Fault>& faults) {
    const Json::Value& name = command.object["command"];
    const Json::Value* known = name.isString() ? FindHelp(help, name.asString()) : nullptr;
    if (known == nullptr) {
        faults.push_back({line, command.column, "no step and no command of the control channel"});
        return;
    }
    for (const auto& [member, column] : command.members) {
        if (!(*known)["members"].isMember(member)) {
            faults.push_back({line, column, "\"" + member + "\" is no member of " + name.asString()});
        }
    }
}

}  // namespace

Scenario ParseScenario(std::string file, std::string_view text, std::vector<Fault>& faults) {
    Scenario scenario{std::move(file), {}};
    Parser parser(scenario, faults);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        parser.Line(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    parser.Finish();
    return scenario;
}

std::vector<Fault> CheckCommands(const std::vector<Step>& steps, const Json::Value& help) {
    std::vector<Fault> faults;
    for (const Step& step : steps) {
        if (const auto* command = std::get_if<Command>(&step.action)) {
            CheckCommand(*command, step.line, help, faults);
        } else if (const auto* repeat = std::get_if<Repeat>(&step.action)) {
            const auto inner = CheckCommands(repeat->steps, help);
            faults.insert(faults.end(), inner.begin(), inner.end());
        }
    }
    return faults;
}

Json::Value ParseCommandWords(const std::vector<std::string>& words, std::string& error) {
    Json::Value command;
    if (words.size() == 1 && words.front().find('{') != std::string::npos) {
        if (!ParseJson(words.front(), command) || !command.isObject()) {
            error = "this is no JSON object";
        }
        return command;
    }
    for (const std::string& word : words) {
        const std::size_t sign = word.find('=');
        if (!command.isMember("command")) {
            command["command"] = word;
        } else if (sign == std::string::npos || sign == 0) {
            error = "\"" + word + "\" is not name=value";
        } else {
            command[word.substr(0, sign)] = ParseValue(std::string_view(word).substr(sign + 1));
        }
    }
    return command;
}

}  // namespace ScenarioRunner
