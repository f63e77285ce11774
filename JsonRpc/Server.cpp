#include "JsonRpc/Server.h"

#include <json/reader.h>

#include <exception>
#include <utility>

#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "JsonRpc/Text.h"

namespace Json::Rpc {

namespace {

std::unique_ptr<Json::CharReader> MakeStrictReader() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["collectComments"] = false;
    builder["rejectDupKeys"] = false;
    // One more than the nesting for the scalar in the innermost bracket, one for the bracket that IsScalar
    // adds.
    builder["stackLimit"] = static_cast<Json::Int>(Limits::kNesting + 2);
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

const char* MessageOf(ErrorCode code) {
    switch (code) {
        case ErrorCode::ParseError:
            return "Parse error.";
        case ErrorCode::InvalidRequest:
            return "Invalid JSON-RPC request.";
        case ErrorCode::MethodNotFound:
            return "Method not found.";
        case ErrorCode::InvalidParams:
            return "Invalid params.";
        case ErrorCode::InternalError:
            break;
    }
    return "Internal error.";
}

Json::Value MakeError(ErrorCode code, const Json::Value& id = Json::Value()) {
    Json::Value response;
    response["jsonrpc"] = "2.0";
    response["id"] = id;
    response["error"]["code"] = static_cast<Json::Int>(code);
    response["error"]["message"] = MessageOf(code);
    return response;
}

std::string_view StringOf(const Json::Value& value) {
    const char* begin = nullptr;
    const char* end = nullptr;
    if (!value.isString() || !value.getString(&begin, &end)) {
        return {};
    }
    return {begin, static_cast<std::size_t>(end - begin)};
}

const Json::Value& IdOf(const Json::Value& request) {
    return request.isObject() ? request["id"] : Json::Value::nullSingleton();
}

}  // namespace

Server::Server() : m_reader(MakeStrictReader()) {}

Server::~Server() = default;

void Server::AddMethod(std::unique_ptr<CallbackMethod> method) {
    std::string name = method->GetName();
    m_methods.insert_or_assign(std::move(name), std::move(method));
}

std::string Server::Answer(const FramedText& text) {
    if (text.kind == FramedText::Kind::Rubbish && IsScalar(text.text)) {
        return ToText(MakeError(ErrorCode::InvalidRequest));
    }
    Json::Value value;
    if (text.kind != FramedText::Kind::Complete || !Parse(text.text, value)) {
        return ToText(MakeError(ErrorCode::ParseError));
    }
    return AnswerValue(value);
}

std::string Server::AnswerValue(const Json::Value& value) {
    if (!value.isArray()) {
        return ToText(Execute(value));
    }
    if (value.empty() || value.size() > Limits::kBatchRequests) {
        return ToText(MakeError(ErrorCode::InvalidRequest));
    }
    return AnswerBatch(value);
}

std::string Server::AnswerBatch(const Json::Value& batch) {
    std::string replies;
    for (const Json::Value& request : batch) {
        replies += replies.empty() ? '[' : ',';
        const bool hasRoom = replies.size() < Limits::kBatchReplyBytes;
        replies += ToText(hasRoom ? Execute(request) : MakeError(ErrorCode::InternalError, IdOf(request)));
        replies.pop_back();  // the reply's line end
    }
    replies += "]\n";
    return replies;
}

Json::Value Server::Execute(const Json::Value& request) {
    if (!request.isObject()) {
        return MakeError(ErrorCode::InvalidRequest);
    }
    if (StringOf(request["jsonrpc"]) != "2.0" || !request["method"].isString()) {
        return MakeError(ErrorCode::InvalidRequest, IdOf(request));
    }
    CallbackMethod* method = Find(request["method"]);
    return method != nullptr ? Call(*method, request) : MakeError(ErrorCode::MethodNotFound, IdOf(request));
}

Json::Value Server::Call(CallbackMethod& method, const Json::Value& request) {
    try {
        Json::Value response;
        if (method.Call(request, response)) {
            return response;
        }
    } catch (const Json::LogicError&) {
        // jsoncpp's own complaint about a parameter of the wrong type
        return MakeError(ErrorCode::InvalidParams, IdOf(request));
    } catch (const std::exception&) {
    }
    return MakeError(ErrorCode::InternalError, IdOf(request));
}

CallbackMethod* Server::Find(const Json::Value& name) const {
    const auto found = m_methods.find(StringOf(name));
    return found != m_methods.end() ? found->second.get() : nullptr;
}

bool Server::Parse(std::string_view text, Json::Value& value) {
    try {
        return m_reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
    } catch (const std::exception&) {
        return false;
    }
}

/// The reader takes arrays and objects only, so the text is made the one element of an array.
bool Server::IsScalar(std::string_view text) {
    Json::Value wrapped;
    return Parse("[" + std::string(text) + "]", wrapped) && wrapped.size() == 1;
}

}  // namespace Json::Rpc
