// Lines to the service, lines from it, and what is in them. Nothing here throws.
#pragma once

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace IpodControl {

/// What a value has under a name, whatever the value is; null where there is none.
const Json::Value& Member(const Json::Value& value, std::string_view name);
/// None when it is no boolean.
std::optional<bool> FlagMember(const Json::Value& value, std::string_view name);
inline bool IsTrueMember(const Json::Value& value, std::string_view name) {
    return FlagMember(value, name).value_or(false);
}
/// Empty when it is no text.
std::string TextMember(const Json::Value& value, std::string_view name);
/// None when it is no whole number.
std::optional<std::int64_t> IntegerMember(const Json::Value& value, std::string_view name);

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

/// An answer, an array of answers, or a notification.
class Message {
  public:
    /// None when `line` is neither, or holds more values than any answer of the service.
    static std::optional<Message> Parse(std::string_view line);

    bool IsNotification() const { return Member(m_whole, "method").isString(); }
    /// Of a notification; empty otherwise.
    std::string Method() const { return TextMember(m_whole, "method"); }
    const Json::Value& Params() const { return Member(m_whole, "params"); }

    /// The request that it answers: of an array the first one's; none where that is no number of a request.
    std::optional<std::uint64_t> Id() const;
    /// Of an answer: one, of an array one for each element.
    std::vector<Reply> Replies() const;
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
/// A page of the list that is open.
Request PageRequest(std::int64_t start, std::int64_t count);
/// Opens or plays an item of that list.
Request SelectRequest(std::int64_t id);

/// The line of one request, or of several as one batch, numbered from `firstId` on; without a line end. The
/// service carries out a batch of up to 32 with no other client's request in between.
std::string RequestLine(std::uint64_t firstId, const std::vector<Request>& requests);

}  // namespace IpodControl
