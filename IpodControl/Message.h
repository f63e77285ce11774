// Lines to the service, and lines from it.
#pragma once

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "IpodControl/JsonMembers.h"

namespace IpodControl {

struct RpcError {
    std::int64_t code = 0;
    std::string message;
};

/// What came back for a request: a result, an error object, or neither (some methods leave it out). A refused
/// operation shows in the result, not as an error.
struct Reply {
    bool hasResult = false;
    Json::Value result;
    std::optional<RpcError> error;
};

/// Of one answer's object. Does not throw.
Reply ReplyIn(const Json::Value& answer);

/// An answer, an array of answers, or a notification.
class Message {
  public:
    /// None when `line` is neither, or holds more values than any answer of the service. Does not throw.
    static std::optional<Message> Parse(std::string_view line);

    bool IsNotification() const { return Member(m_whole, "method").isString(); }
    /// Of a notification; empty otherwise.
    std::string Method() const { return TextMember(m_whole, "method"); }
    const Json::Value& Params() const { return Member(m_whole, "params"); }

    /// The request that it answers: of an array the first one's; none where that is no number of a request.
    std::optional<std::uint64_t> Id() const;
    const Json::Value& Whole() const { return m_whole; }
    /// Of the line that it was, in bytes.
    std::size_t Size() const { return m_size; }

  private:
    Message(Json::Value whole, std::size_t size) : m_whole(std::move(whole)), m_size(size) {}

    Json::Value m_whole;
    std::size_t m_size;
};

struct Request {
    std::string method;
    Json::Value params{};  ///< left out where null
};

/// {name: value}
Json::Value Params(const char* name, Json::Value value);

/// A request's line, without a line end.
std::string RequestLine(std::uint64_t id, const Request& request);
/// Several, numbered from `firstId` on, as one batch. The service carries out up to 32 with no other client's
/// request in between.
std::string BatchLine(std::uint64_t firstId, const std::vector<Request>& requests);

}  // namespace IpodControl
