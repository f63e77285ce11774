#include "IpodControl/Message.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>

namespace IpodControl {

namespace {

/// An error is an object; with a text or null in its place, some other protocol answers.
bool IsAnswer(const Json::Value& value) {
    return value.isObject() && value.isMember("id") &&
           (value.isMember("error") ? value["error"].isObject() : value.isMember("result"));
}

/// The service answers with an id alone where a method has no result.
bool IsEmptyAnswer(const Json::Value& value) {
    return value.isObject() && value.isMember("id") && value.isMember("jsonrpc") &&
           !value.isMember("method") && !value.isMember("error");
}

bool IsNotice(const Json::Value& value) {
    return value.isObject() && value["method"].isString() && !value.isMember("id");
}

bool IsBatch(const Json::Value& value) {
    if (!value.isArray() || value.empty()) {
        return false;
    }
    for (const Json::Value& answer : value) {
        if (!IsAnswer(answer) && !IsEmptyAnswer(answer)) {
            return false;
        }
    }
    return true;
}

/// A value takes much more memory than the few bytes that may stand for it. The list of all songs of a
/// library of a million has as many as this.
bool HasTooManyValues(std::string_view line) {
    constexpr std::ptrdiff_t kMost = 4'000'000;
    return std::count_if(line.begin(), line.end(), [](char c) { return c == ',' || c == '[' || c == '{'; }) >
           kMost;
}

}  // namespace

bool ParseJson(std::string_view text, Json::Value& value) {
    constexpr int kDeepestNesting = 64;
    try {
        Json::CharReaderBuilder builder;
        Json::CharReaderBuilder::strictMode(&builder.settings_);
        builder["strictRoot"] = false;
        builder["stackLimit"] = kDeepestNesting;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        return reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
    } catch (const std::exception&) {
        // Nested too deeply, which the parser says by throwing.
        return false;
    }
}

std::optional<Message> Message::Parse(std::string_view line) {
    Json::Value value;
    if (!HasTooManyValues(line) && ParseJson(line, value) &&
        (IsNotice(value) || IsAnswer(value) || IsEmptyAnswer(value) || IsBatch(value))) {
        return Message(std::move(value), line.size());
    }
    return std::nullopt;
}

bool Message::IsAnswerTo(std::uint64_t id) const {
    return m_whole.isObject() && !IsNotification() && m_whole["id"].isUInt64() &&
           m_whole["id"].asUInt64() == id;
}

std::string Message::Method() const {
    return IsNotification() ? m_whole["method"].asString() : std::string();
}

std::optional<RpcError> Message::Error() const {
    const Json::Value error = Member("error");
    if (!error.isObject()) {
        return std::nullopt;
    }
    return RpcError{error["code"].isInt64() ? error["code"].asInt64() : 0,
                    error["message"].isString() ? error["message"].asString() : "no message"};
}

Json::Value Message::Member(const char* name) const {
    return m_whole.isObject() && m_whole.isMember(name) ? m_whole[name] : Json::Value();
}

std::string ToLine(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    // With all 17 digits 0.178 would come as 0.17799999999999999.
    builder["precision"] = 15;
    return Json::writeString(builder, value);
}

std::string RequestLine(std::uint64_t id, std::string_view method, const Json::Value& params) {
    Json::Value request;
    request["jsonrpc"] = "2.0";
    request["id"] = Json::UInt64{id};
    request["method"] = std::string(method);
    if (!params.isNull()) {
        request["params"] = params;
    }
    return ToLine(request);
}

}  // namespace IpodControl
