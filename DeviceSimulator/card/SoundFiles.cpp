#include "DeviceSimulator/card/SoundFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace DeviceSimulator {
namespace {

constexpr const char* kFolderVariable = "DEVICE_SIMULATOR_AUDIO";
constexpr long kDefaultRate = 44100;
constexpr long kLowestRate = 8000;
constexpr long kHighestRate = 192000;
/// Where the file of what was played starts over, so that a long run does not fill the disk: six minutes.
constexpr std::uint32_t kMostPlaybackBytes = 64U << 20;
constexpr std::size_t kHeaderBytes = 44;

void PutLittleEndian(char* at, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        at[i] = static_cast<char>(value >> (8 * i));
}

std::array<char, kHeaderBytes> WavHeader(std::uint32_t rate, std::uint32_t dataBytes) {
    std::array<char, kHeaderBytes> header{};
    std::memcpy(&header[0], "RIFF", 4);
    PutLittleEndian(&header[4], dataBytes + kHeaderBytes - 8, 4);
    std::memcpy(&header[8], "WAVEfmt ", 8);
    PutLittleEndian(&header[16], 16, 4);
    PutLittleEndian(&header[20], 1, 2);  // PCM
    PutLittleEndian(&header[22], kSoundChannels, 2);
    PutLittleEndian(&header[24], rate, 4);
    PutLittleEndian(&header[28], rate * kFrameBytes, 4);
    PutLittleEndian(&header[32], kFrameBytes, 2);
    PutLittleEndian(&header[34], 16, 2);
    std::memcpy(&header[36], "data", 4);
    PutLittleEndian(&header[40], dataBytes, 4);
    return header;
}

Descriptor OpenCapture(const std::string& path) {
    return Descriptor(path.empty() ? -1 : open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
}

}  // namespace

std::string SoundFilePath(const char* name) {
    const char* folder = std::getenv(kFolderVariable);
    if (folder == nullptr || *folder == '\0')
        return {};
    return std::string(folder) + '/' + name;
}

bool SoundFileExists(const std::string& path) {
    struct stat unused {};
    return !path.empty() && stat(path.c_str(), &unused) == 0;
}

long ReadSoundNumber(const std::string& path, long lowest, long highest, long otherwise) {
    const Descriptor file(path.empty() ? -1 : open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
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
    m_file = OpenCapture(m_path);
    if (!m_file.IsOpen())
        m_file = OpenCapture(m_pathOfRate);
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
    if (m_path.empty())
        return;
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
    lseek(m_file.Get(), kHeaderBytes, SEEK_SET);
}

void PlaybackFile::WriteHeader() {
    if (!m_file.IsOpen())
        return;
    const std::array<char, kHeaderBytes> header = WavHeader(m_rate, m_dataBytes);
    if (pwrite(m_file.Get(), header.data(), header.size(), 0) < 0)
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
