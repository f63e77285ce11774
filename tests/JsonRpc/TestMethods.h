// Methods for the tests to call, one for each way a method can end.
#pragma once

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"

class TestMethods {
  public:
    explicit TestMethods(Json::Rpc::Server& server) {
        for (const char* name : {"echo", "fill", "sleep", "refuse", "throw"}) {
            server.AddMethod(
                std::make_unique<Json::Rpc::RpcMethod<TestMethods>>(*this, &TestMethods::Run, name));
        }
        server.AddMethod(
            std::make_unique<Json::Rpc::TextMethod<TestMethods>>(*this, &TestMethods::Text, "text"));
    }

    int calls = 0;
    std::vector<int> callers;  ///< the "caller" of each call's params, where there is one

  private:
    bool Run(const Json::Value& request, Json::Value& response) {
        ++calls;
        const std::string name = request["method"].asString();
        const Json::Value& params = request["params"];
        response["jsonrpc"] = "2.0";
        response["id"] = request["id"];
        response["result"] = name == "fill" ? std::string(params["size"].asUInt(), 'f') : params;
        if (params.isObject() && params.isMember("caller")) {
            callers.push_back(params["caller"].asInt());
        }
        if (name == "sleep") {
            std::this_thread::sleep_for(std::chrono::milliseconds(params["ms"].asInt()));
        }
        if (name == "throw") {
            throw std::runtime_error("broken");
        }
        return name != "refuse";
    }

    bool Text(const Json::Value& request, std::string& result) {
        result = request["params"].asString();
        return result != "refuse";
    }
};
