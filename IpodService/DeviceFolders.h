// The folders in which a device leaves files.
#pragma once

#include <string>

/// Where closing a device looks for files to delete. Tests name folders of their own.
struct DeviceFolders {
    std::string database = "/home/root/iap2db";
    std::string playlists = "/";
};

/// Makes the database folder unless it is there; says in the log how that went.
void PrepareDatabaseFolder(const DeviceFolders& folders);

/// Deletes the playlists and databases that a device has left. What cannot be deleted stays.
void ClearDeviceFiles(const DeviceFolders& folders);
