// The one method of a server that is measured alone.
#pragma once

#include <memory>

#include "JsonRpc/ObjectText.h"
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
    bool Run(const Json::Rpc::Request&, std::string& result) {
        Json::Rpc::ObjectText(result).Add("connected", false).End();
        return true;
    }
};
