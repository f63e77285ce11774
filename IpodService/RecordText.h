// Texts of fixed length, as the device manager's records hold them.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

/// A text in a record: up to its NUL, or the whole field when a device wrote none. Refers to the record.
template <std::size_t size>
std::string_view RecordText(const char (&field)[size]) {
    return {field, strnlen(field, size)};
}
