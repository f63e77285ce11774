// What clients can call by name.
#pragma once

#include <json/value.h>

#include <string>
#include <string_view>
#include <utility>

#include "JsonRpc/Reply.h"
#include "ServiceUtil/ThreadRole.h"

namespace Json::Rpc {

class Method {
  public:
    virtual ~Method() = default;

    /// The name on the wire, case-sensitive, the same at every call. Any thread.
    virtual std::string GetName() const = 0;

    /// A description for people, or null. Any thread.
    virtual Json::Value GetDescription() const = 0;

    /// Executes the request and writes the reply, one line, with the id's own text in it. False, or an
    /// exception, makes the server answer with an error instead.
    virtual bool Reply(const Json::Value& request, std::string_view id, std::string& reply)
        REQUIRES(kServerThread) = 0;
};

/// A method that fills the response as a value.
class CallbackMethod : public Method {
  public:
    /// Fills the whole response object from the request. False, or an exception, makes the server discard
    /// what was filled and answer with an error instead. Whatever the "id" in the response, the one of the
    /// request is sent.
    virtual bool Call(const Json::Value& request, Json::Value& response) REQUIRES(kServerThread) = 0;

    bool Reply(const Json::Value& request, std::string_view id, std::string& reply) final
        REQUIRES(kServerThread) {
        Json::Value response;
        if (!Call(request, response)) {
            return false;
        }
        reply = ObjectReply(response, id);
        return true;
    }
};

/// Calls a member function of an object, which must outlive the method.
template <typename T>
class RpcMethod : public CallbackMethod {
  public:
    using Member = bool (T::*)(const Json::Value& request, Json::Value& response);

    RpcMethod(T& object, Member method, std::string name, Json::Value description = Json::Value())
        : m_object(object),
          m_method(method),
          m_name(std::move(name)),
          m_description(std::move(description)) {}

    bool Call(const Json::Value& request, Json::Value& response) override REQUIRES(kServerThread) {
        return (m_object.*m_method)(request, response);
    }
    std::string GetName() const override { return m_name; }
    Json::Value GetDescription() const override { return m_description; }

  private:
    T& m_object;
    Member m_method;
    std::string m_name;
    Json::Value m_description;
};

/// As RpcMethod, for results too large for a tree of values: the member function writes the JSON text of
/// "result" itself, without a line end; left empty, the reply has no "result".
template <typename T>
class TextMethod : public Method {
  public:
    using Member = bool (T::*)(const Json::Value& request, std::string& result);

    TextMethod(T& object, Member method, std::string name)
        : m_object(object), m_method(method), m_name(std::move(name)) {}

    bool Reply(const Json::Value& request, std::string_view id, std::string& reply) override
        REQUIRES(kServerThread) {
        std::string result;
        if (!(m_object.*m_method)(request, result)) {
            return false;
        }
        reply = TextReply(result, id);
        return true;
    }
    std::string GetName() const override { return m_name; }
    Json::Value GetDescription() const override { return {}; }

  private:
    T& m_object;
    Member m_method;
    std::string m_name;
};

}  // namespace Json::Rpc
