#include "DeviceSimulator/music/CoverFolder.h"

#include <glib.h>

#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "DeviceSimulator/music/LibraryText.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

constexpr const char* kExtension = ".jpg";
constexpr std::size_t kDigestLength = 64;

std::string ReadBytes(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string bytes(kMostCoverBytes, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

}  // namespace

CoverFolder::CoverFolder(fs::path folder, bool isWritable)
    : m_folder(std::move(folder)), m_isWritable(isWritable && !m_folder.empty()) {
    std::error_code ignored;
    if (m_isWritable) {
        fs::create_directory(m_folder, ignored);
    }
}

std::uint32_t CoverFolder::Number(const CoverKey& cover) {
    if (cover.IsNone()) {
        return kNoCover;
    }
    const auto [place, isNew] = m_numbers.try_emplace(cover.digest, kNoCover);
    if (place->second == kNoCover && IsThere(cover.digest)) {
        place->second = static_cast<std::uint32_t>(m_covers.size());
        m_covers.push_back(cover);
    }
    return place->second;
}

void CoverFolder::Keep(const CoverKey& cover, std::string_view bytes) {
    if (IsThere(cover.digest)) {
        return;
    }
    const fs::path fresh = m_folder / (cover.digest + ".new");
    std::error_code error;
    if (m_isWritable &&
        std::ofstream(fresh, std::ios::binary).write(bytes.data(), std::ssize(bytes)).flush()) {
        fs::rename(fresh, FileOf(cover.digest), error);
        if (!error) {
            return;
        }
    }
    m_inMemory.try_emplace(cover.digest, bytes);
}

std::shared_ptr<const Picture> CoverFolder::Read(std::uint32_t number) const {
    if (number >= m_covers.size()) {
        return nullptr;
    }
    const CoverKey& cover = m_covers[number];
    std::string bytes;
    if (const auto kept = m_inMemory.find(cover.digest); kept != m_inMemory.end()) {
        bytes = kept->second;
    } else {
        bytes = ReadBytes(FileOf(cover.digest));
        if (TakeGlibText(g_compute_checksum_for_string(G_CHECKSUM_SHA256, bytes.data(), std::ssize(bytes))) !=
            cover.digest) {
            return nullptr;
        }
    }
    return std::make_shared<const Picture>(Picture{{bytes.begin(), bytes.end()}, cover.width, cover.height});
}

void CoverFolder::RemoveOthers(const std::unordered_set<std::string>& digests) const {
    std::error_code error;
    for (fs::directory_iterator entry(m_folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().native();
        const bool isOurs =
            name.size() == kDigestLength + 4 && name.find_first_not_of("0123456789abcdef") == kDigestLength;
        if (isOurs && !(name.ends_with(kExtension) && digests.contains(name.substr(0, kDigestLength)))) {
            std::error_code ignored;
            fs::remove(entry->path(), ignored);
        }
    }
}

fs::path CoverFolder::FileOf(const std::string& digest) const {
    return m_folder / (digest + kExtension);
}

bool CoverFolder::IsThere(const std::string& digest) const {
    std::error_code ignored;
    return m_inMemory.contains(digest) || (!m_folder.empty() && fs::exists(FileOf(digest), ignored));
}

}  // namespace DeviceSimulator
