#include "DeviceSimulator/card/SoundFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace DeviceSimulator {
namespace {

constexpr long kDefaultRate = 44100;
constexpr long kLowestRate = 8000;
constexpr long kHighestRate = 192000;
/// Where the file of what was played starts over, so that a long run does not fill the disk: six minutes.
constexpr std::uint32_t kMostPlaybackBytes = 64U << 20;

/// Of 16-bit sound; numbers are little-endian, as in memory.
struct WavHeader {
    char riff[4] = {'R', 'I', 'F', 'F'};
    std::uint32_t bytesBehind = 0;
    char wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t formatBytes = 16;
    std::uint16_t format = 1;  // PCM
    std::uint16_t channels = kSoundChannels;
    std::uint32_t rate = 0;
    std::uint32_t bytesASecond = 0;
    std::uint16_t bytesAFrame = kFrameBytes;
    std::uint16_t bitsASample = 16;
    char data[4] = {'d', 'a', 't', 'a'};
    std::uint32_t dataBytes = 0;
};
static_assert(sizeof(WavHeader) == 44 && std::endian::native == std::endian::little);

/// Closed where there is none, as with an empty path; a pipe without a writer does not hold it up.
Descriptor OpenForReading(const std::string& path) {
    return Descriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace

std::string SoundFilePath(const char* name) {
    const char* folder = std::getenv("DEVICE_SIMULATOR_AUDIO");
    if (folder == nullptr || *folder == '\0')
        return {};
    return std::string(folder) + '/' + name;
}

bool SoundFileExists(const std::string& path) {
    struct stat unused {};
    return stat(path.c_str(), &unused) == 0;
}

long ReadSoundNumber(const std::string& path, long lowest, long highest, long otherwise) {
    const Descriptor file = OpenForReading(path);
    char text[16] = "";
    if (!file.IsOpen() || read(file.Get(), text, sizeof text - 1) <= 0)
        return otherwise;
    const long number = std::strtol(text, nullptr, 10);
    return number >= lowest && number <= highest ? number : otherwise;
}

std::uint32_t ReadCaptureRate() {
    const std::string path = SoundFilePath("capture.rate");
    return static_cast<std::uint32_t>(ReadSoundNumber(path, kLowestRate, kHighestRate, kDefaultRate));
}

CaptureFile::CaptureFile(std::uint32_t rate)
    : m_path(SoundFilePath("capture.pcm")),
      m_pathOfRate(SoundFilePath(("capture-" + std::to_string(rate) + ".pcm").c_str())) {
    Open();
}

void CaptureFile::Open() {
    m_file = OpenForReading(m_path);
    if (!m_file.IsOpen())
        m_file = OpenForReading(m_pathOfRate);
}

void CaptureFile::Read(void* into, std::size_t frames) {
    if (!m_file.IsOpen())
        Open();
    char* const bytes = static_cast<char*>(into);
    const std::size_t wanted = frames * kFrameBytes;
    std::memcpy(bytes, m_partial.data(), m_partialSize);
    const std::size_t got = m_partialSize + ReadBytes(bytes + m_partialSize, wanted - m_partialSize);
    // A pipe may break a frame in two, and silence between its halves would swap the channels for good.
    m_partialSize = got % kFrameBytes;
    std::memcpy(m_partial.data(), bytes + got - m_partialSize, m_partialSize);
    std::memset(bytes + got - m_partialSize, 0, wanted - (got - m_partialSize));
}

std::size_t CaptureFile::ReadBytes(char* into, std::size_t size) {
    std::size_t got = 0;
    while (m_file.IsOpen() && got < size) {
        const ssize_t count = read(m_file.Get(), into + got, size - got);
        if (count <= 0)
            break;
        got += static_cast<std::size_t>(count);
    }
    return got;
}

PlaybackFile::PlaybackFile() : m_path(SoundFilePath("playback.wav")) {}

PlaybackFile::~PlaybackFile() {
    WriteHeader();
}

void PlaybackFile::Begin(std::uint32_t rate) {
    m_rate = rate;
    constexpr mode_t kReadableByAll = 0644;
    m_file = Descriptor(
        open(m_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, kReadableByAll));
    StartOver();
}

void PlaybackFile::StartOver() {
    if (!m_file.IsOpen())
        return;
    m_dataBytes = 0;
    // Neither works on a pipe, which just goes on.
    if (ftruncate(m_file.Get(), 0) == 0)
        WriteHeader();
    lseek(m_file.Get(), sizeof(WavHeader), SEEK_SET);
}

void PlaybackFile::WriteHeader() {
    if (!m_file.IsOpen())
        return;
    WavHeader header;
    header.rate = m_rate;
    header.bytesASecond = m_rate * kFrameBytes;
    header.dataBytes = m_dataBytes;
    header.bytesBehind = m_dataBytes + sizeof header - 8;
    if (pwrite(m_file.Get(), &header, sizeof header, 0) < 0)
        return;
}

void PlaybackFile::Write(const void* from, std::size_t frames) {
    if (!m_file.IsOpen())
        return;
    if (m_dataBytes >= kMostPlaybackBytes)
        StartOver();
    const ssize_t written = write(m_file.Get(), from, frames * kFrameBytes);
    if (written > 0)
        m_dataBytes += static_cast<std::uint32_t>(written);
}

}  // namespace DeviceSimulator
