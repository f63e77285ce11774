#include "JsonRpc/Server.h"

#include <json/reader.h>

#include <exception>
#include <utility>

#include "JsonRpc/ReaderText.h"
#include "JsonRpc/Text.h"

namespace Json::Rpc {

namespace {

std::unique_ptr<Json::CharReader> MakeReader() {
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

std::string_view StringOf(const Json::Value& value) {
    const char* begin = nullptr;
    const char* end = nullptr;
    if (!value.isString() || !value.getString(&begin, &end)) {
        return {};
    }
    return {begin, static_cast<std::size_t>(end - begin)};
}

/// A scalar byte for byte as it was sent; line ends may stand between the tokens of others.
std::string IdOf(const Json::Value& request, std::string_view text) {
    constexpr std::string_view kId = "id";
    const Json::Value* id = request.find(kId.data(), kId.data() + kId.size());
    if (id == nullptr) {
        return "null";
    }
    if (id->isArray() || id->isObject()) {
        std::string line = ToText(*id);
        line.pop_back();
        return line;
    }
    const auto begin = static_cast<std::size_t>(id->getOffsetStart());
    return std::string(text.substr(begin, static_cast<std::size_t>(id->getOffsetLimit()) - begin));
}

}  // namespace

Server::Server() : m_reader(MakeReader()) {}

Server::~Server() = default;

void Server::AddMethod(std::unique_ptr<Method> method) {
    std::string name = method->GetName();
    m_methods.insert_or_assign(std::move(name), std::move(method));
}

std::string Server::Execute(std::string_view text) {
    return Answer(text, false);
}

std::string Server::Decline(std::string_view text) {
    return Answer(text, true);
}

std::string Server::Answer(std::string_view text, bool isDeclined) {
    if (text.empty() || text.front() != '{') {
        return ErrorReply(ErrorCode::InvalidRequest);
    }
    Json::Value request;
    if (!Parse(text, request)) {
        return ErrorReply(ErrorCode::ParseError);
    }
    const std::string id = IdOf(request, text);
    const Json::Value& constRequest = request;
    if (StringOf(constRequest["jsonrpc"]) != "2.0" || !constRequest["method"].isString()) {
        return ErrorReply(ErrorCode::InvalidRequest, id);
    }
    Method* method = Find(constRequest["method"]);
    if (method == nullptr) {
        return ErrorReply(ErrorCode::MethodNotFound, id);
    }
    return isDeclined ? ErrorReply(ErrorCode::InternalError, id) : Call(*method, request, id);
}

std::string Server::Call(Method& method, const Json::Value& request, std::string_view id) {
    try {
        std::string reply;
        if (method.Reply(request, id, reply)) {
            return reply;
        }
    } catch (const Json::LogicError&) {
        // jsoncpp's own complaint about a parameter of the wrong type
        return ErrorReply(ErrorCode::InvalidParams, id);
    } catch (const std::exception&) {
    }
    return ErrorReply(ErrorCode::InternalError, id);
}

Method* Server::Find(const Json::Value& name) const {
    const auto found = m_methods.find(StringOf(name));
    return found != m_methods.end() ? found->second.get() : nullptr;
}

bool Server::Parse(std::string_view text, Json::Value& value) {
    try {
        std::string readable(text);
        MakeReadable(readable);
        return m_reader->parse(readable.data(), readable.data() + readable.size(), &value, nullptr);
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace Json::Rpc
