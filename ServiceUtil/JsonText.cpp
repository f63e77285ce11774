#include "ServiceUtil/JsonText.h"

#include <exception>
#include <memory>

std::optional<Json::Value> ReadJson(std::string_view text, int deepest, std::string* why) {
    try {
        Json::CharReaderBuilder builder;
        Json::CharReaderBuilder::strictMode(&builder.settings_);
        builder["strictRoot"] = false;
        builder["stackLimit"] = deepest;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        Json::Value value;
        if (reader->parse(text.data(), text.data() + text.size(), &value, why)) {
            return value;
        }
    } catch (const std::exception& failure) {
        // Nested too deeply, which the reader says by throwing.
        if (why != nullptr) {
            *why = failure.what();
        }
    }
    return std::nullopt;
}

std::string WriteJson(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    // With all 17 digits 0.178 would come as 0.17799999999999999.
    builder["precision"] = 15;
    return Json::writeString(builder, value);
}
