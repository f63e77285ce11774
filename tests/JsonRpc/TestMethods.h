// Methods for the tests to call, one for each way a method can end.
#pragma once

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"
#include "JsonRpc/Text.h"

class TestMethods {
  public:
    explicit TestMethods(Json::Rpc::Server& server) {
        using Method = Json::Rpc::RpcMethod<TestMethods>;
        const std::pair<const char*, Method::Member> methods[] = {
            {"echo", &TestMethods::Echo},     {"fill", &TestMethods::Fill},   {"sleep", &TestMethods::Sleep},
            {"refuse", &TestMethods::Refuse}, {"throw", &TestMethods::Throw}, {"text", &TestMethods::Text}};
        for (const auto& [name, member] : methods) {
            server.AddMethod(std::make_unique<Method>(*this, member, name));
        }
    }

    int calls = 0;
    std::vector<int> callers;  ///< the "caller" of each call's params, where there is one

  private:
    using Request = Json::Rpc::Request;

    bool Echo(const Request& request, std::string& result) {
        ++calls;
        const Json::Value& params = request.Params();
        if (params.isObject() && params.isMember("caller")) {
            callers.push_back(params["caller"].asInt());
        }
        result += Json::Rpc::ToText(params);
        result.pop_back();
        return true;
    }
    bool Fill(const Request& request, std::string& result) {
        ++calls;
        result += '"' + std::string(request.Params()["size"].asUInt(), 'f') + '"';
        return true;
    }
    bool Sleep(const Request& request, std::string& result) {
        Echo(request, result);
        std::this_thread::sleep_for(std::chrono::milliseconds(request.Params()["ms"].asInt()));
        return true;
    }
    bool Refuse(const Request&, std::string& result) {
        result += "what is not sent";
        return false;
    }
    bool Throw(const Request&, std::string& result) {
        ++calls;
        result += "what is not sent";
        throw std::runtime_error("broken");
    }
    bool Text(const Request& request, std::string& result) {
        result += request.Params().asString();
        return request.Params().asString() != "refuse";
    }
};
