// What clients can call by name.
#pragma once

#include <json/value.h>

#include <string>
#include <utility>

#include "JsonRpc/Request.h"
#include "ServiceUtil/ThreadRole.h"

namespace Json::Rpc {

class CallbackMethod {
  public:
    virtual ~CallbackMethod() = default;

    /// Executes the request and appends the JSON text of its result, without a line end; nothing, for a reply
    /// without "result". False, or an exception, makes the server answer with an error instead: with "invalid
    /// params" when the JSON library complains about a parameter's type.
    virtual bool Call(const Request& request, std::string& result) REQUIRES(kServerThread) = 0;

    /// The name on the wire, case-sensitive, the same at every call. Any thread.
    virtual std::string GetName() const = 0;

    /// A description for people, or null. Any thread.
    virtual Json::Value GetDescription() const = 0;
};

/// Calls a member function of an object, which must outlive the method.
template <typename T>
class RpcMethod : public CallbackMethod {
  public:
    using Member = bool (T::*)(const Request& request, std::string& result);

    RpcMethod(T& object, Member method, std::string name, Json::Value description = Json::Value())
        : m_object(object),
          m_method(method),
          m_name(std::move(name)),
          m_description(std::move(description)) {}

    bool Call(const Request& request, std::string& result) override REQUIRES(kServerThread) {
        return (m_object.*m_method)(request, result);
    }
    std::string GetName() const override { return m_name; }
    Json::Value GetDescription() const override { return m_description; }

  private:
    T& m_object;
    Member m_method;
    std::string m_name;
    Json::Value m_description;
};

}  // namespace Json::Rpc
