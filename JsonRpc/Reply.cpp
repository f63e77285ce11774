#include "JsonRpc/Reply.h"

#include <utility>

namespace Json::Rpc {

namespace {

constexpr std::size_t kUsualLength = 256;

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

ResultReply::ResultReply(std::string_view id) {
    m_text.reserve(id.size() + kUsualLength);
    m_text.append("{\"id\":").append(id).append(",\"jsonrpc\":\"2.0\"");
    m_end = m_text.size();
    m_text.append(",\"result\":");
    m_begin = m_text.size();
}

std::string ResultReply::Take() {
    if (m_text.size() == m_begin) {
        m_text.resize(m_end);
    }
    m_text.append("}\n");
    return std::move(m_text);
}

}  // namespace Json::Rpc
