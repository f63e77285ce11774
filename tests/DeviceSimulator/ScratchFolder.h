// A folder of its own for a test, gone with it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace DeviceSimulator {

class ScratchFolder {
  public:
    ScratchFolder() {
        std::string name = std::filesystem::temp_directory_path() / "simulator-test-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            std::abort();
        }
        m_path = name;
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

    /// Writes a file below the folder, with the folders above it.
    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes) const {
        std::filesystem::path path = m_path / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

  private:
    std::filesystem::path m_path;
};

}  // namespace DeviceSimulator
