// Where the device manager is asked to build a device's database.
#pragma once

#include <string>
#include <string_view>

inline constexpr std::string_view kDatabaseExtension = ".db";

/// ".db" at the end, in that case, behind a last dot.
bool HasDatabaseExtension(std::string_view deviceName);

/// The path of a device's database below the working directory, which is not where the service looks for
/// databases to delete; at most 255 bytes. The device's owner gives it its name, and the file is written with
/// the service's rights: a '/' in the name becomes '_'.
std::string DatabasePath(std::string_view deviceName);
