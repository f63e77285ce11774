#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"

/// Methods for the tests to call, one for each way a method can end.
class TestMethods {
  public:
    explicit TestMethods(Json::Rpc::Server& server) {
        for (const char* name : {"echo", "fill", "refuse", "throw"}) {
            server.AddMethod(
                std::make_unique<Json::Rpc::RpcMethod<TestMethods>>(*this, &TestMethods::Run, name));
        }
    }

    int m_calls = 0;

  private:
    bool Run(const Json::Value& request, Json::Value& response) {
        ++m_calls;
        const std::string name = request["method"].asString();
        const Json::Value& params = request["params"];
        response["jsonrpc"] = "2.0";
        response["id"] = request["id"];
        response["result"] = name == "fill" ? std::string(params["size"].asUInt(), 'f') : params;
        if (name == "throw") {
            throw std::runtime_error("broken");
        }
        return name != "refuse";
    }
};
