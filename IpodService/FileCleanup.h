// Finds and deletes the files that a device leaves behind.
#pragma once

#include <string>
#include <string_view>
#include <vector>

/// The names of the regular files of `folder` that contain `text`, ASCII case ignored, anywhere in the name;
/// in directory order. Empty when the folder cannot be read. Entries whose type the file system does not tell
/// are left out.
std::vector<std::string> ListFiles(const std::string& folder, std::string_view text);

/// Deletes the named files of `folder`. A file that cannot be deleted stays.
void RemoveFiles(const std::string& folder, const std::vector<std::string>& names);
