// Lines of JSON, read and written.
#pragma once

#include <json/json.h>

#include <optional>
#include <string>
#include <string_view>

/// The value that `text` is: exactly one, as the standard has it, nested at most `deepest` levels. Else none,
/// and the reader's reason in `why` where that is given. Does not throw for any text. Any thread.
std::optional<Json::Value> ReadJson(std::string_view text, int deepest = 64, std::string* why = nullptr);

/// `value` as one line of compact JSON, without a line end; UTF-8 as it is. Any thread.
std::string WriteJson(const Json::Value& value);
