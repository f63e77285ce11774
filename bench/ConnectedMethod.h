// The one method of a server that is measured alone.
#pragma once

#include <memory>

#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"

/// isIpodConnected, as cheap as a method can be. Outlives the server.
class ConnectedMethod {
  public:
    void AddTo(Json::Rpc::Server& server) {
        server.AddMethod(std::make_unique<Json::Rpc::RpcMethod<ConnectedMethod>>(*this, &ConnectedMethod::Run,
                                                                                 "isIpodConnected"));
    }

  private:
    bool Run(const Json::Value& request, Json::Value& response) {
        response["jsonrpc"] = "2.0";
        response["id"] = request["id"];
        response["result"]["connected"] = false;
        return true;
    }
};
