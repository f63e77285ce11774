#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "JsonRpc/RpcMethod.h"
#include "JsonRpc/Server.h"

/// Methods for the tests to call, one for each way a method can end.
class TestMethods {
  public:
    void AddTo(Json::Rpc::Server& server) {
        Add(server, &TestMethods::Echo, "echo");
        Add(server, &TestMethods::Number, "number");
        Add(server, &TestMethods::Refuse, "refuse");
        Add(server, &TestMethods::Throw, "throw");
        Add(server, &TestMethods::Fill, "fill");
    }

    int m_calls = 0;

  private:
    using Member = bool (TestMethods::*)(const Json::Value&, Json::Value&);

    void Add(Json::Rpc::Server& server, Member member, const char* name) {
        server.AddMethod(std::make_unique<Json::Rpc::RpcMethod<TestMethods>>(*this, member, name));
    }

    void Answer(const Json::Value& request, Json::Value& response) {
        ++m_calls;
        response["jsonrpc"] = "2.0";
        response["id"] = request["id"];
    }
    bool Echo(const Json::Value& request, Json::Value& response) {
        Answer(request, response);
        response["result"] = request["params"];
        return true;
    }
    bool Number(const Json::Value& request, Json::Value& response) {
        Answer(request, response);
        response["result"] = request["params"]["value"].asInt();
        return true;
    }
    bool Refuse(const Json::Value& request, Json::Value& response) {
        Answer(request, response);
        return false;
    }
    bool Throw(const Json::Value& request, Json::Value& response) {
        Answer(request, response);
        throw std::runtime_error("broken");
    }
    bool Fill(const Json::Value& request, Json::Value& response) {
        Answer(request, response);
        response["result"] = std::string(request["params"]["size"].asUInt(), 'f');
        return true;
    }
};
