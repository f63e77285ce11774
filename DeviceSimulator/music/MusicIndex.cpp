#include "DeviceSimulator/music/MusicIndex.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "DeviceSimulator/music/LibraryText.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

/// The number counts up with every change of what is kept, and of what is read of a file.
constexpr std::string_view kHead = "The simulated player's music, version 1.\n";
constexpr std::size_t kMostRecord = 65536;

/// FNV-1a.
std::uint32_t Checksum(std::string_view bytes) {
    std::uint32_t sum = 0x811C9DC5;
    for (const char c : bytes) {
        sum = (sum ^ static_cast<unsigned char>(c)) * 0x01000193;
    }
    return sum;
}

template <typename Pack, typename Stamp, typename Record>
void PackRecord(Pack& packer, Stamp& stamp, Record& record) {
    packer(stamp.size);
    packer(stamp.modified);
    packer(record.isMusic);
    packer(record.failure);
    PackTags(packer, record.tags, record.cover);
}

/// None where it is not of `stamp`.
std::optional<MusicRecord> RecordOf(std::string_view packed, const std::optional<FileStamp>& stamp) {
    FileStamp found;
    MusicRecord record;
    Unpacker unpacker(packed);
    PackRecord(unpacker, found, record);
    const bool isOfIt = unpacker.IsOver() && found == stamp.value_or(found);
    return isOfIt ? std::optional(std::move(record)) : std::nullopt;
}

/// A checksum, then path and rest; a vanished file's has none.
std::string Packed(std::string_view path, std::string_view rest) {
    std::string payload;
    Packer packer(payload);
    packer(path);
    payload += rest;
    std::string record;
    Packer outer(record);
    outer(Checksum(payload));
    outer(std::string_view(payload));
    return record;
}

/// Takes the next record off the front of `text`; false when it is not whole.
bool TakeRecord(std::string_view& text, std::string_view& path, std::string_view& rest) {
    Unpacker outer(text);
    std::uint32_t checksum = 0;
    std::string_view payload;
    outer(checksum);
    outer(payload);
    Unpacker inner(payload);
    inner(path);
    rest = inner.Rest();
    text = outer.Rest();
    return outer.IsGood() && inner.IsGood() && payload.size() <= kMostRecord && Checksum(payload) == checksum;
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

bool IsBelow(std::string_view path, const std::string& folder) {
    return path.starts_with(folder) && (folder.ends_with('/') || path.substr(folder.size()).starts_with('/'));
}

}  // namespace

MusicIndex::MusicIndex(const fs::path& folder) : m_path(folder / "music.index") {
    bool isThere = false;
    if (!folder.empty()) {
        std::error_code error;
        fs::create_directories(folder, error);
        errno = 0;
        const bool isWritable = OpenForWriting();
        const int failure = errno;
        const std::size_t good = Load();
        isThere = isWritable || good > 0 || failure == EWOULDBLOCK;
        if (isWritable) {
            StartOver(good);
        } else {
            m_problem = isThere
                            ? "another process writes there"
                            : (error ? error : std::error_code(failure, std::generic_category())).message();
        }
    }
    m_covers = std::make_shared<CoverFolder>(isThere ? folder / "covers" : fs::path(), m_file.IsOpen());
}

/// Behind what is good of it.
void MusicIndex::StartOver(std::size_t good) {
    if (good < m_text.size()) {
        // Nobody else writes: it has been cut short or damaged, or is of another version.
        m_hasFailed = ftruncate(m_file.Get(), static_cast<off_t>(good)) != 0;
    }
    if (good == 0) {
        Append(kHead);
        m_isChanged = false;  // that alone is nothing to tidy up for
    }
}

bool MusicIndex::OpenForWriting() {
    constexpr mode_t kMode = 0644;
    m_lock = Descriptor(open((m_path.native() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kMode));
    if (!m_lock.IsOpen() || flock(m_lock.Get(), LOCK_EX | LOCK_NB) != 0) {
        return false;
    }
    m_file = Descriptor(open(m_path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kMode));
    return m_file.IsOpen();
}

/// Returns how much of the file is good.
std::size_t MusicIndex::Load() {
    m_text = ReadFile(m_path);
    m_known.clear();
    m_records = 0;
    std::string_view rest = m_text;
    if (!rest.starts_with(kHead)) {
        return 0;
    }
    rest.remove_prefix(kHead.size());
    std::size_t good = kHead.size();
    for (std::string_view path, record; TakeRecord(rest, path, record); good = m_text.size() - rest.size()) {
        m_known.erase(path);
        if (!record.empty()) {
            m_known.emplace(path, Known{record});
        }
        ++m_records;
    }
    return good;
}

std::optional<MusicRecord> MusicIndex::Find(const FoundFile& file) {
    const auto known = m_known.find(file.path);
    if (known == m_known.end()) {
        return std::nullopt;
    }
    known->second.isWanted = true;
    auto record = RecordOf(known->second.rest, file.stamp);
    const bool isWhole = record && (record->cover.IsNone() || m_covers->Number(record->cover) != kNoCover);
    return isWhole ? std::move(record) : std::nullopt;
}

void MusicIndex::Put(const FoundFile& file, const MusicRecord& record) {
    std::string rest;
    Packer packer(rest);
    PackRecord(packer, file.stamp, record);
    Append(Packed(file.path, rest));
}

void MusicIndex::Append(std::string_view bytes) {
    if (m_file.IsOpen() && !m_hasFailed) {
        m_isChanged = true;
        m_hasFailed = write(m_file.Get(), bytes.data(), bytes.size()) != std::ssize(bytes);
    }
}

bool MusicIndex::Close(const std::string& folder) {
    for (const auto& [path, known] : m_known) {
        if (!folder.empty() && !known.isWanted && IsBelow(path, folder)) {
            Append(Packed(path, {}));
        }
    }
    if (m_isChanged && !m_hasFailed) {
        Tidy();
    }
    m_known = {};
    m_text = {};
    m_file.Close();
    m_lock.Close();
    return !m_hasFailed;
}

void MusicIndex::Tidy() {
    Load();
    if (m_records > m_known.size() + m_known.size() / 4) {
        Rewrite();
    }
    std::unordered_set<std::string> digests;
    for (const auto& known : m_known) {
        if (auto record = RecordOf(known.second.rest, std::nullopt)) {
            digests.insert(std::move(record->cover.digest));
        }
    }
    m_covers->RemoveOthers(digests);
}

/// Without what has been written over. Whoever reads the old file at this moment reads on in that.
void MusicIndex::Rewrite() {
    const fs::path fresh = m_path.native() + ".new";
    std::ofstream file(fresh, std::ios::binary);
    file << kHead;
    for (const auto& [path, known] : m_known) {
        file << Packed(path, known.rest);
    }
    file.close();
    std::error_code error;
    if (file) {
        fs::rename(fresh, m_path, error);
    }
    m_hasFailed = !file || error;
}

}  // namespace DeviceSimulator
