#pragma once

#include <json/value.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "JsonRpc/RpcMethod.h"

namespace Json {
class CharReader;
}

namespace Json::Rpc {

struct FramedText;

/// The errors of the protocol itself. The values are the codes on the wire.
enum class ErrorCode {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    InternalError = -32603,
};

/// The table of methods, and what turns a request text into its reply text. Knows no socket.
class Server {
  public:
    Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    virtual ~Server();

    /// Takes over the method; one of the same name is replaced. Before the first request.
    void AddMethod(std::unique_ptr<CallbackMethod> method);

    /// Executes the request or batch and returns the reply, one line. Every text gets a reply: what cannot be
    /// executed is answered with an error, and a request without "id" is executed and answered with "id":
    /// null. Exceptions of a method end here. Server thread, which is where the methods run.
    std::string Answer(const FramedText& text);

  private:
    std::string AnswerValue(const Json::Value& value);
    std::string AnswerBatch(const Json::Value& batch);
    Json::Value Execute(const Json::Value& request);
    Json::Value Call(CallbackMethod& method, const Json::Value& request);
    CallbackMethod* Find(const Json::Value& name) const;
    bool Parse(std::string_view text, Json::Value& value);
    bool IsScalar(std::string_view text);

    std::map<std::string, std::unique_ptr<CallbackMethod>, std::less<>> m_methods;
    std::unique_ptr<Json::CharReader> m_reader;
};

}  // namespace Json::Rpc
