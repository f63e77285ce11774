// One line from the service.
#pragma once

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace IpodControl {

struct RpcError {
    std::int64_t code = 0;
    std::string message;
};

/// An answer, an array of answers, or a notification.
class Message {
  public:
    /// None when `line` is neither, or holds more values than any answer of the service. Does not throw.
    static std::optional<Message> Parse(std::string_view line);

    bool IsNotification() const { return m_whole.isObject() && m_whole.isMember("method"); }
    bool IsAnswerTo(std::uint64_t id) const;

    /// Of a notification; empty otherwise.
    std::string Method() const;
    Json::Value Params() const { return Member("params"); }

    /// Of an answer. A refused operation shows in the result, not as an error.
    bool HasResult() const { return m_whole.isObject() && m_whole.isMember("result"); }
    Json::Value Result() const { return Member("result"); }
    std::optional<RpcError> Error() const;

    const Json::Value& Whole() const { return m_whole; }
    /// Of the line that it was, in bytes.
    std::size_t Size() const { return m_size; }

  private:
    Message(Json::Value whole, std::size_t size) : m_whole(std::move(whole)), m_size(size) {}
    Json::Value Member(const char* name) const;

    Json::Value m_whole;
    std::size_t m_size;
};

/// False when `text` is not one JSON value. Does not throw.
bool ParseJson(std::string_view text, Json::Value& value);

/// `value` as one line of compact JSON, without a line end; UTF-8 as it is.
std::string ToLine(const Json::Value& value);

/// A request's line, without a line end. Null `params` are left out.
std::string RequestLine(std::uint64_t id, std::string_view method, const Json::Value& params);

}  // namespace IpodControl
