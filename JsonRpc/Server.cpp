#include "JsonRpc/Server.h"

#include <exception>
#include <utility>

#include "JsonRpc/Reply.h"

namespace Json::Rpc {

void Server::AddMethod(std::unique_ptr<CallbackMethod> method) {
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
    const Request request(text);
    if (!request.IsValid()) {
        return ErrorReply(ErrorCode::InvalidRequest, request.Id());
    }
    const auto found = m_methods.find(request.Method());
    if (found == m_methods.end()) {
        return ErrorReply(ErrorCode::MethodNotFound, request.Id());
    }
    return isDeclined ? ErrorReply(ErrorCode::InternalError, request.Id()) : Call(*found->second, request);
}

std::string Server::Call(CallbackMethod& method, const Request& request) {
    try {
        ResultReply reply(request.Id());
        if (method.Call(request, reply.Result())) {
            return reply.Take();
        }
    } catch (const Json::LogicError&) {
        // jsoncpp's own complaint about a parameter of the wrong type
        return ErrorReply(ErrorCode::InvalidParams, request.Id());
    } catch (const std::exception&) {
    }
    return ErrorReply(ErrorCode::InternalError, request.Id());
}

}  // namespace Json::Rpc
