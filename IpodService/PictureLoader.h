// The way to the module that shrinks pictures.
#pragma once

#include <string>

#include "PictureModule/PictureModule.h"

/// Loads the module when it is asked for, and keeps it: the image library that comes with it takes more
/// memory than the service has otherwise. One thread at a time.
class PictureLoader {
  public:
    /// `path` is the module's; the loader looks for one without a slash wherever the environment says.
    explicit PictureLoader(std::string path) : m_path(std::move(path)) {}

    /// Null when the module cannot be loaded, or is of another version than the service. The log says why,
    /// once.
    const PictureModule* Module();

  private:
    void Refuse(const std::string& reason);

    std::string m_path;
    const PictureModule* m_module = nullptr;
    bool m_hasRefused = false;
};

/// Beside the program itself, wherever that was installed: `lib/ipod-service` next to the folder that it lies
/// in. Empty when the system does not tell where that is.
std::string InstalledPictureModule();
