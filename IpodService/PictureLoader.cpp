#include "IpodService/PictureLoader.h"

#include <dlfcn.h>

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include "IpodService/LogText.h"
#include "ServiceUtil/Logger.h"

namespace {

struct Unload {
    void operator()(void* library) const { dlclose(library); }
};

}  // namespace

const PictureModule* PictureLoader::Module() {
    if (m_module != nullptr) {
        return m_module;
    }
    // Lazily: the module's own functions are bound now all the same, and those among its hundred libraries
    // are not.
    std::unique_ptr<void, Unload> library(dlopen(m_path.c_str(), RTLD_LAZY | RTLD_LOCAL));
    const void* const symbol = library ? dlsym(library.get(), kPictureModuleSymbol) : nullptr;
    if (symbol == nullptr) {
        Refuse(dlerror());
        return nullptr;
    }
    const auto* const module = static_cast<const PictureModule*>(symbol);
    if (module->version != kPictureModuleVersion) {
        Refuse(m_path + ": of another version than the service");
        return nullptr;
    }
    static_cast<void>(library.release());  // stays until the process ends
    m_module = module;
    return m_module;
}

void PictureLoader::Refuse(const std::string& reason) {
    if (!std::exchange(m_hasRefused, true)) {
        LOG_WARN("Large pictures stay as they are. %s\n", LogText(reason).c_str());
    }
}

std::string InstalledPictureModule() {
    std::error_code failed;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failed);
    return failed ? "" : program.parent_path().parent_path() / "lib/ipod-service/pictures.so";
}
