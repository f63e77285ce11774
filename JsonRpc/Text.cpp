#include "JsonRpc/Text.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>
#include <stdexcept>

#include "JsonRpc/ReaderText.h"

namespace Json::Rpc {

namespace {

std::unique_ptr<Json::CharReader> MakeReader() {
    Json::CharReaderBuilder builder;
    builder["collectComments"] = false;
    return std::unique_ptr<Json::CharReader>(builder.newCharReader());
}

}  // namespace

// The stream writers that are to replace this one differ in details of its text and take twice as long.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
std::string ToText(const Json::Value& value) {
    return Json::FastWriter().write(value);
}
#pragma GCC diagnostic pop

Json::Value FromText(std::string_view text) {
    thread_local const std::unique_ptr<Json::CharReader> reader = MakeReader();
    std::string readable(text);
    MakeReadable(readable);
    Json::Value value;
    if (!reader->parse(readable.data(), readable.data() + readable.size(), &value, nullptr)) {
        throw std::logic_error("text of which the grammar has not been checked");
    }
    return value;
}

}  // namespace Json::Rpc
