#include "IpodControl/Message.h"

#include <algorithm>

#include "ServiceUtil/JsonText.h"

namespace IpodControl {

namespace {

/// The service answers with an id alone where a method has no result. An error is an object; with a text or
/// null in its place, some other protocol answers.
bool IsAnswer(const Json::Value& value) {
    if (!value.isObject() || !value.isMember("id") || value.isMember("method")) {
        return false;
    }
    return value.isMember("error") ? value["error"].isObject()
                                   : value.isMember("result") || value.isMember("jsonrpc");
}

bool IsNotice(const Json::Value& value) {
    return value.isObject() && value["method"].isString() && !value.isMember("id");
}

bool IsBatch(const Json::Value& value) {
    return value.isArray() && !value.empty() && std::all_of(value.begin(), value.end(), IsAnswer);
}

/// A value takes much more memory than the few bytes that may stand for it. The list of all songs of a
/// library of a million has as many as this.
bool HasTooManyValues(std::string_view line) {
    constexpr std::ptrdiff_t kMost = 4'000'000;
    return std::count_if(line.begin(), line.end(), [](char c) { return c == ',' || c == '[' || c == '{'; }) >
           kMost;
}

Reply ReplyIn(const Json::Value& answer) {
    Reply reply{answer.isMember("result"), Member(answer, "result"), std::nullopt};
    if (const Json::Value& error = Member(answer, "error"); error.isObject()) {
        const std::string message = TextMember(error, "message");
        reply.error =
            RpcError{IntegerMember(error, "code").value_or(0), message.empty() ? "no message" : message};
    }
    return reply;
}

}  // namespace

const Json::Value& Member(const Json::Value& value, std::string_view name) {
    static const Json::Value none;
    const Json::Value* const found =
        value.isObject() ? value.find(name.data(), name.data() + name.size()) : nullptr;
    return found != nullptr ? *found : none;
}

std::optional<bool> FlagMember(const Json::Value& value, std::string_view name) {
    const Json::Value& member = Member(value, name);
    return member.isBool() ? std::optional(member.asBool()) : std::nullopt;
}

std::string TextMember(const Json::Value& value, std::string_view name) {
    const Json::Value& member = Member(value, name);
    return member.isString() ? member.asString() : std::string();
}

std::optional<std::int64_t> IntegerMember(const Json::Value& value, std::string_view name) {
    const Json::Value& member = Member(value, name);
    return member.isInt64() ? std::optional<std::int64_t>(member.asInt64()) : std::nullopt;
}

std::optional<Message> Message::Parse(std::string_view line) {
    auto value = HasTooManyValues(line) ? std::nullopt : ReadJson(line);
    if (value && (IsNotice(*value) || IsAnswer(*value) || IsBatch(*value))) {
        return Message(std::move(*value), line.size());
    }
    return std::nullopt;
}

std::optional<std::uint64_t> Message::Id() const {
    const Json::Value& id = Member(m_whole.isArray() ? m_whole[0] : m_whole, "id");
    return id.isUInt64() ? std::optional<std::uint64_t>(id.asUInt64()) : std::nullopt;
}

std::vector<Reply> Message::Replies() const {
    if (!m_whole.isArray()) {
        return {ReplyIn(m_whole)};
    }
    std::vector<Reply> replies;
    std::transform(m_whole.begin(), m_whole.end(), std::back_inserter(replies), ReplyIn);
    return replies;
}

Json::Value Params(const char* name, Json::Value value) {
    Json::Value params;
    params[name] = std::move(value);
    return params;
}

Request PageRequest(std::int64_t start, std::int64_t count) {
    Request request{"getBrowseList"};
    request.params["startIndex"] = Json::Int64{start};
    request.params["itemCount"] = Json::Int64{count};
    return request;
}

Request SelectRequest(std::int64_t id) {
    return {"selectBrowseItem", Params("itemId", Json::Int64{id})};
}

std::string RequestLine(std::uint64_t firstId, const std::vector<Request>& requests) {
    Json::Value batch(Json::arrayValue);
    for (const Request& request : requests) {
        Json::Value& object = batch.append(Json::objectValue);
        object["jsonrpc"] = "2.0";
        object["id"] = Json::UInt64{firstId++};
        object["method"] = request.method;
        if (!request.params.isNull()) {
            object["params"] = request.params;
        }
    }
    return WriteJson(batch.size() == 1 ? batch[0] : batch);
}

}  // namespace IpodControl
