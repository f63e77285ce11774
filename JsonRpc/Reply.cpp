#include "JsonRpc/Reply.h"

#include <json/writer.h>

#include "JsonRpc/Text.h"

namespace Json::Rpc {

namespace {

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

}  // namespace

std::string ErrorReply(ErrorCode code, std::string_view id) {
    std::string reply = "{\"error\":{\"code\":" + std::to_string(static_cast<int>(code)) + ",\"message\":\"";
    reply.append(MessageOf(code)).append("\"},\"id\":").append(id).append(",\"jsonrpc\":\"2.0\"}\n");
    return reply;
}

std::string ObjectReply(Json::Value& response, std::string_view id) {
    response["id"];  // is there from here on, whatever the method did
    std::string reply;
    for (auto member = response.begin(); member != response.end(); ++member) {
        const std::string name = member.name();
        reply += reply.empty() ? '{' : ',';
        reply += Json::valueToQuotedString(name.c_str());
        reply += ':';
        if (name == "id") {
            reply += id;
        } else {
            reply += ToText(*member);
            reply.pop_back();  // the line's end
        }
    }
    reply += "}\n";
    return reply;
}

std::string TextReply(std::string_view result, std::string_view id) {
    constexpr std::string_view kResult = ",\"result\":";
    std::string reply;
    reply.reserve(result.size() + id.size() + 64);
    reply.append("{\"id\":").append(id).append(",\"jsonrpc\":\"2.0\"");
    if (!result.empty()) {
        reply.append(kResult).append(result);
    }
    return reply.append("}\n");
}

}  // namespace Json::Rpc
