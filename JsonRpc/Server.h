// The table of methods, and what turns a request's text into its reply's text. Knows no socket.
#pragma once

#include <json/value.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "JsonRpc/RpcMethod.h"
#include "ServiceUtil/ThreadRole.h"

namespace Json {
class CharReader;
}

namespace Json::Rpc {

class Server {
  public:
    Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    virtual ~Server();

    /// Takes over the method; one of the same name is replaced. Before the first request.
    void AddMethod(std::unique_ptr<Method> method);

    /// Executes a request and returns its reply, one line. The text is one JSON value, of which the grammar
    /// has been checked. Every text gets a reply: what cannot be executed is answered with an error, and a
    /// request without "id" is executed and answered with "id": null. Exceptions of a method end here.
    std::string Execute(std::string_view text) REQUIRES(kServerThread);

    /// As Execute, but answers with an internal error what would be executed.
    std::string Decline(std::string_view text) REQUIRES(kServerThread);

  private:
    std::string Answer(std::string_view text, bool isDeclined) REQUIRES(kServerThread);
    std::string Call(Method& method, const Json::Value& request, std::string_view id) REQUIRES(kServerThread);
    Method* Find(const Json::Value& name) const;
    bool Parse(std::string_view text, Json::Value& value);

    std::map<std::string, std::unique_ptr<Method>, std::less<>> m_methods;
    std::unique_ptr<Json::CharReader> m_reader;
};

}  // namespace Json::Rpc
