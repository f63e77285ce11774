// The words of one line of a scenario.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "IpodControl/Message.h"
#include "ScenarioRunner/Condition.h"

namespace ScenarioRunner {

using IpodControl::ParseJson;

/// JSON where it is JSON, else the text itself.
Json::Value ParseValue(std::string_view text);
/// "500ms", "1.5s", "2min": at most an hour.
std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text);

/// Notes the first thing that is wrong; from there on the line is at its end.
class LineReader {
  public:
    /// Refers to `line`.
    explicit LineReader(std::string_view line) : m_line(line) {}

    /// At the line's end, or at a comment.
    bool IsAtEnd();
    /// Of what comes next, from 1.
    std::size_t Column();
    /// What comes next, up to a blank, without taking it.
    std::string_view Peek();
    /// Takes it when it is `word`.
    bool Take(std::string_view word);

    /// A name, of a step or of a member; complains when there is none.
    std::string Name(std::string_view what);
    /// "name=value"; of an operator other than "=" only where `isCondition`, where a value alone will do too.
    Condition Pair(bool isCondition);
    /// A value alone.
    Json::Value Value();
    std::chrono::milliseconds Duration();
    std::size_t Count();

    void Complain(std::string text, std::optional<std::size_t> column = {});
    const std::string& Error() const { return m_error; }
    std::size_t ErrorColumn() const { return m_errorColumn; }

  private:
    std::string_view NameAhead();
    std::optional<Operator> TakeOperator();
    /// Where the JSON value that begins here ends.
    std::size_t JsonEnd() const;

    const std::string_view m_line;
    std::size_t m_at = 0;
    std::string m_error;
    std::size_t m_errorColumn = 0;
};

}  // namespace ScenarioRunner
