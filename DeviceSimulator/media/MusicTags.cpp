#include "DeviceSimulator/media/MusicTags.h"

#include <attachedpictureframe.h>
#include <fileref.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <tfilestream.h>
#include <tpropertymap.h>
#include <wavfile.h>
#include <xiphcomment.h>

#include <cerrno>
#include <charconv>
#include <exception>
#include <utility>

namespace DeviceSimulator {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Each format keeps its pictures in a place of its own. A front cover is in front.
std::vector<Bytes> PicturesOf(TagLib::File& file) {
    std::vector<Bytes> pictures;
    bool hasFront = false;
    const auto add = [&](const TagLib::ByteVector& data, bool isFront = false) {
        const bool isFirst = isFront && !std::exchange(hasFront, hasFront || isFront);
        pictures.emplace(isFirst ? pictures.begin() : pictures.end(), data.begin(), data.end());
    };
    const auto addId3 = [&](const TagLib::ID3v2::Tag* tag) {
        using Picture = TagLib::ID3v2::AttachedPictureFrame;
        for (const auto* frame : tag != nullptr ? tag->frameList("APIC") : TagLib::ID3v2::FrameList()) {
            if (const auto* picture = dynamic_cast<const Picture*>(frame)) {
                add(picture->picture(), picture->type() == Picture::FrontCover);
            }
        }
    };
    const auto addFlac = [&](const TagLib::List<TagLib::FLAC::Picture*>& all) {
        for (const auto* picture : all) {
            add(picture->data(), picture->type() == TagLib::FLAC::Picture::FrontCover);
        }
    };
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
        addId3(mpeg->ID3v2Tag());
    } else if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(&file)) {
        addId3(wav->ID3v2Tag());
    } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
        addFlac(flac->pictureList());
    } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
        addFlac(xiph->pictureList());
    } else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
        for (const auto& picture : mp4->item("covr").toCoverArtList()) {
            add(picture.data());
        }
    }
    return pictures;
}

std::string Name(const TagLib::String& text) {
    return text.to8Bit(true).substr(0, kMostScanTextBytes);
}

/// The number in front, as of "3" or "3/12"; 0 when there is none.
std::uint32_t Number(const TagLib::StringList& values) {
    if (values.isEmpty()) {
        return 0;
    }
    const std::string text = values.front().to8Bit(true);
    std::uint32_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

TrackTags TagsOf(const TagLib::PropertyMap& properties) {
    const auto all = [&properties](const char* key) { return Name(properties[key].toString(", ")); };
    const auto first = [&properties](const char* key) {
        const auto& values = properties[key];
        return values.isEmpty() ? std::string() : Name(values.front());
    };
    TrackTags tags;
    tags.title = all("TITLE");
    tags.artist = all("ARTIST");
    tags.album = first("ALBUM");
    tags.albumArtist = all("ALBUMARTIST");
    tags.genre = first("GENRE");
    tags.composer = all("COMPOSER");
    tags.disc = Number(properties["DISCNUMBER"]);
    tags.track = Number(properties["TRACKNUMBER"]);
    tags.compilation = Number(properties["COMPILATION"]) != 0 ? 1 : 0;
    return tags;
}

/// The tag library looks for the beginning of the sound for as long as there are bytes, be they terabytes, in
/// small blocks.
class BoundedStream : public TagLib::FileStream {
  public:
    explicit BoundedStream(const char* path) : FileStream(path, true) {}

    TagLib::ByteVector readBlock(unsigned long length) override {
        unsigned long& left = length <= kSearchedBlock ? m_leftToSearch : m_leftToRead;
        if (length > left) {
            left = 0;
            return {};
        }
        left -= length;
        errno = 0;
        TagLib::ByteVector block = FileStream::readBlock(length);
        m_error = block.size() < length && errno != 0 ? errno : m_error;
        return block;
    }

    /// The errno of a read that has failed, which the tag library takes for the end of the file; 0 for none.
    int Error() const { return m_error; }

  private:
    static constexpr unsigned long kSearchedBlock = 1024;

    unsigned long m_leftToSearch = 4UL << 20;
    unsigned long m_leftToRead = 128UL << 20;
    int m_error = 0;
};

void Read(TagLib::IOStream& stream, MusicFile& file) {
    const TagLib::FileRef reference(&stream);
    const TagLib::AudioProperties* const sound = reference.audioProperties();
    if (sound == nullptr || sound->sampleRate() <= 0 || sound->lengthInMilliseconds() <= 0) {
        return;
    }
    file.facts.tags = TagsOf(reference.file()->properties());
    file.facts.tags.durationMs = static_cast<std::uint32_t>(sound->lengthInMilliseconds());
    file.facts.tags.sampleRate = static_cast<std::uint32_t>(sound->sampleRate());
    file.pictures = PicturesOf(*reference.file());
    file.facts.isMusic = 1;
}

}  // namespace

MusicFile ReadMusicFile(const std::string& path) {
    MusicFile file;
    BoundedStream stream(path.c_str());
    int error = stream.isOpen() ? 0 : errno;
    if (error == 0) {
        try {
            Read(stream, file);
        } catch (const std::exception&) {
            file = {};  // whatever a damaged file led the tag library into
        }
        error = stream.Error();
    }
    if (error != 0) {
        file = {};
        file.facts.error = static_cast<std::uint32_t>(error);
    }
    return file;
}

}  // namespace DeviceSimulator
