#pragma once

#include <json/value.h>

#include <string>
#include <utility>

namespace Json::Rpc {

/// One method that clients can call by its name.
class CallbackMethod {
  public:
    virtual ~CallbackMethod() = default;

    /// Fills the whole response object from the request. False, or an exception, makes the server discard
    /// what was filled and answer with an error instead. Server thread.
    virtual bool Call(const Json::Value& request, Json::Value& response) = 0;

    /// The name on the wire, case-sensitive, the same at every call. Any thread.
    virtual std::string GetName() const = 0;

    /// A description for people, or null. Any thread.
    virtual Json::Value GetDescription() const = 0;
};

/// A method that calls a member function of an object, which must outlive it.
template <typename T>
class RpcMethod : public CallbackMethod {
  public:
    using Member = bool (T::*)(const Json::Value& request, Json::Value& response);

    RpcMethod(T& object, Member method, std::string name, Json::Value description = Json::Value())
        : m_object(object),
          m_method(method),
          m_name(std::move(name)),
          m_description(std::move(description)) {}

    bool Call(const Json::Value& request, Json::Value& response) override {
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

}  // namespace Json::Rpc
