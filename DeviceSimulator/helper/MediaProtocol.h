// What the simulated player and its media program, simulated-player-media, say to each other over a socket.
// Both run on one machine and are built together, so numbers are as they lie in memory.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace DeviceSimulator {

// What the program is to do is its first argument.
constexpr const char* kSoundWork = "sound";  ///< the sound card's folder is the second one
constexpr const char* kScanWork = "scan";

/// What it ends with when a file takes more memory than it may.
constexpr int kOutOfMemoryStatus = 12;

// Sound: one message of a SOCK_SEQPACKET socket each, a fixed head and text behind it.

/// A track as the player knows it: the same file is another one each time that it begins.
struct SoundTrack {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    bool operator==(const SoundTrack&) const = default;
};

/// What is to sound from now on. Behind it: the file's path, in any bytes; nothing for silence.
struct SoundCommand {
    SoundTrack track;
    std::chrono::nanoseconds position{0};  ///< into the track ...
    std::chrono::nanoseconds since{0};     ///< ... at this time of CLOCK_MONOTONIC
    std::uint32_t rate = 0;                ///< Hz
    std::uint32_t isMoving = 0;
};

/// What has become of a track. Behind it: why it cannot be decoded; nothing when it has begun to sound.
struct SoundReport {
    SoundTrack track;
};

constexpr std::size_t kMostSoundText = 16384;

// Scanning: a SOCK_STREAM socket. A message is the length of what follows, 32 bits, and that. The program
// sends one that is empty, then a ScannedFile for each path that it is sent, in their order.

/// What a player hands over of a cover at a time at most.
constexpr std::size_t kMostCoverBytes = 2097152;
constexpr std::size_t kMostScanTextBytes = 2048;  ///< of each text
constexpr std::size_t kMostScanAnswer = kMostCoverBytes + 65536;

/// What one track says of itself; empty where it says nothing.
struct TrackTags {
    std::string title;
    std::string artist;
    std::string album;
    std::string albumArtist;
    std::string genre;
    std::string composer;
    std::uint32_t disc = 0;   ///< 0: not told
    std::uint32_t track = 0;  ///< 0: not told
    std::uint32_t compilation = 0;
    std::uint32_t durationMs = 0;
    std::uint32_t sampleRate = 44100;  ///< the file's own, in Hz
};

/// A JPEG by its SHA-256 in small hexadecimal digits, and its size in pixels; without digits: none.
struct CoverKey {
    std::string digest;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool IsNone() const { return digest.empty(); }
};

struct ScannedFile {
    std::uint32_t error = 0;  ///< the errno why it cannot be read at present; 0: it has been
    std::uint32_t isMusic = 0;
    TrackTags tags;
    CoverKey cover;
    std::string picture;  ///< the cover's bytes, once in a program's life
};

/// Adds what it is called with to a text.
class Packer {
  public:
    explicit Packer(std::string& packed) : m_packed(packed) {}

    void operator()(std::uint32_t number) { Add(&number, sizeof number); }
    void operator()(std::int64_t number) { Add(&number, sizeof number); }
    void operator()(std::string_view text) {
        (*this)(static_cast<std::uint32_t>(text.size()));
        m_packed += text;
    }

  private:
    void Add(const void* bytes, std::size_t size) { m_packed.append(static_cast<const char*>(bytes), size); }

    std::string& m_packed;
};

/// Takes it apart again, and trusts nothing in it.
class Unpacker {
  public:
    explicit Unpacker(std::string_view packed) : m_rest(packed) {}

    void operator()(std::uint32_t& number) { Take(&number, sizeof number); }
    void operator()(std::int64_t& number) { Take(&number, sizeof number); }
    /// A view of what is taken apart.
    void operator()(std::string_view& text) {
        std::uint32_t size = 0;
        (*this)(size);
        m_isGood = m_isGood && size <= m_rest.size();
        text = m_rest.substr(0, m_isGood ? size : 0);
        m_rest.remove_prefix(text.size());
    }
    void operator()(std::string& text) {
        std::string_view view;
        (*this)(view);
        text = view;
    }
    bool IsGood() const { return m_isGood; }
    std::string_view Rest() const { return m_rest; }
    /// Everything was there, and nothing else.
    bool IsOver() const { return m_isGood && m_rest.empty(); }

  private:
    void Take(void* into, std::size_t size) {
        m_isGood = m_isGood && size <= m_rest.size();
        if (m_isGood) {
            std::memcpy(into, m_rest.data(), size);
            m_rest.remove_prefix(size);
        }
    }

    std::string_view m_rest;
    bool m_isGood = true;
};

/// `packer`: a Packer, or an Unpacker where the others are not constant.
template <typename Pack, typename Tags, typename Key>
void PackTags(Pack& packer, Tags& tags, Key& cover) {
    for (auto* text :
         {&tags.title, &tags.artist, &tags.album, &tags.albumArtist, &tags.genre, &tags.composer}) {
        packer(*text);
    }
    for (auto* number : {&tags.disc, &tags.track, &tags.compilation, &tags.durationMs, &tags.sampleRate,
                         &cover.width, &cover.height}) {
        packer(*number);
    }
    packer(cover.digest);
}

template <typename Pack, typename File>
void PackScanned(Pack& packer, File& file) {
    packer(file.error);
    packer(file.isMusic);
    PackTags(packer, file.tags, file.cover);
    packer(file.picture);
}

}  // namespace DeviceSimulator
