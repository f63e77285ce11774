// The texts that a server answers with: each one line of JSON, ended by "\n".
#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace Json::Rpc {

/// The errors of the protocol itself. The values are the codes on the wire.
enum class ErrorCode {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    InternalError = -32603,
};

/// In all of these `id` is JSON text and stands in the reply as it is. Any thread.

std::string ErrorReply(ErrorCode code, std::string_view id = "null");

/// The response object with the id's text as its member "id".
std::string ObjectReply(Json::Value& response, std::string_view id);

/// A reply around the JSON text of its member "result"; without the member when the text is empty. The text
/// is copied once.
std::string TextReply(std::string_view result, std::string_view id);

}  // namespace Json::Rpc
