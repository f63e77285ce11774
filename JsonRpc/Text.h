#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace Json::Rpc {

/// The value as it goes over the wire: one line of compact JSON ended by "\n", keys sorted, characters
/// outside ASCII as \uXXXX. Strings should be well-formed UTF-8; of others the ill-formed bytes are damaged,
/// but the text stays JSON. Any thread.
std::string ToText(const Json::Value& value);

/// The value that a text is of which the grammar has been checked. Of numbers beyond the range of double it
/// makes 1e308, of half a surrogate pair U+FFFD. Throws std::bad_alloc. Any thread.
Json::Value FromText(std::string_view text);

}  // namespace Json::Rpc
