// One request: its envelope, and its parameters when they are asked for.
#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

namespace Json::Rpc {

/// Looks into the client's text, which must outlive it. Of a member that comes twice the last one counts.
/// One thread at a time.
class Request {
  public:
    /// The text is one JSON value, of which the grammar has been checked.
    explicit Request(std::string_view text);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    /// False when it is no request of JSON-RPC 2.0.
    bool IsValid() const { return m_isVersion2 && m_method.has_value(); }

    /// JSON text: a scalar byte for byte as it was sent, an array or object without whitespace; "null" where
    /// there is none.
    std::string_view Id() const { return m_id; }

    /// Of a valid request.
    std::string_view Method() const { return *m_method; }

    /// Read the first time it is called; null when there are none. Throws std::bad_alloc.
    const Json::Value& Params() const;

  private:
    void Take(std::string_view name, std::string_view value);

    std::string_view m_id = "null";
    std::optional<std::string_view> m_method;
    bool m_isVersion2 = false;
    std::string_view m_paramsText;
    mutable std::optional<Json::Value> m_params;

    // What does not stand in the text as it is
    std::string m_idText;
    std::string m_methodText;
};

}  // namespace Json::Rpc
