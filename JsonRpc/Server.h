// The table of methods, and what turns a request's text into its reply's text. Knows no socket.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "JsonRpc/Request.h"
#include "JsonRpc/RpcMethod.h"
#include "ServiceUtil/ThreadRole.h"

namespace Json::Rpc {

class Server {
  public:
    Server() = default;
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    virtual ~Server() = default;

    /// Takes over the method; one of the same name is replaced. Before the first request.
    void AddMethod(std::unique_ptr<CallbackMethod> method);

    /// Executes a request and returns its reply, one line. The text is one JSON value, of which the grammar
    /// has been checked. Every text gets a reply: what cannot be executed is answered with an error, and a
    /// request without "id" is executed and answered with "id": null. Exceptions of a method end here.
    std::string Execute(std::string_view text) REQUIRES(kServerThread);

    /// As Execute, but answers with an internal error what would be executed.
    std::string Decline(std::string_view text) REQUIRES(kServerThread);

  private:
    /// Finds a name that stands in a request without a copy of it.
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };

    std::string Answer(std::string_view text, bool isDeclined) REQUIRES(kServerThread);
    std::string Call(CallbackMethod& method, const Request& request) REQUIRES(kServerThread);

    std::unordered_map<std::string, std::unique_ptr<CallbackMethod>, Hash, std::equal_to<>> m_methods;
};

}  // namespace Json::Rpc
