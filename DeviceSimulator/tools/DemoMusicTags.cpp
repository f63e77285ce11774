#include "DeviceSimulator/tools/DemoMusicTags.h"

#include <attachedpictureframe.h>
#include <fileref.h>
#include <flacfile.h>
#include <id3v2tag.h>
#include <mp4file.h>
#include <mpegfile.h>
#include <png.h>
#include <tpropertymap.h>
#include <xiphcomment.h>

#include <memory>
#include <utility>

namespace DeviceSimulator {

namespace {

/// Each format keeps its pictures in a place of its own.
void AddPicture(TagLib::File& file, const DemoPicture& picture) {
    using Frame = TagLib::ID3v2::AttachedPictureFrame;
    const TagLib::ByteVector bytes(reinterpret_cast<const char*>(picture.bytes.data()),
                                   static_cast<unsigned int>(picture.bytes.size()));
    const bool isJpeg = bytes.startsWith("\xFF");
    const char* const type = isJpeg ? "image/jpeg" : "image/png";
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
        auto frame = std::make_unique<Frame>();
        frame->setMimeType(type);
        frame->setType(picture.isFront ? Frame::FrontCover : Frame::BackCover);
        frame->setPicture(bytes);
        mpeg->ID3v2Tag(true)->addFrame(frame.release());  // the tag owns it
        return;
    }
    if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
        TagLib::MP4::CoverArtList covers = mp4->item("covr").toCoverArtList();
        covers.append({isJpeg ? TagLib::MP4::CoverArt::JPEG : TagLib::MP4::CoverArt::PNG, bytes});
        mp4->setItem("covr", covers);
        return;
    }
    auto block = std::make_unique<TagLib::FLAC::Picture>();
    block->setMimeType(type);
    block->setType(picture.isFront ? TagLib::FLAC::Picture::FrontCover : TagLib::FLAC::Picture::BackCover);
    block->setData(bytes);
    if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
        flac->addPicture(block.release());  // the file owns it
    } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
        xiph->addPicture(block.release());
    }
}

TagLib::PropertyMap PropertiesOf(const TrackTags& tags) {
    const auto number = [](std::uint32_t value) {
        return value == 0 ? std::string() : std::to_string(value);
    };
    TagLib::PropertyMap properties;
    for (const auto& [key, value] : {std::pair<const char*, std::string>{"TITLE", tags.title},
                                     {"ARTIST", tags.artist},
                                     {"ALBUM", tags.album},
                                     {"ALBUMARTIST", tags.albumArtist},
                                     {"GENRE", tags.genre},
                                     {"COMPOSER", tags.composer},
                                     {"DISCNUMBER", number(tags.disc)},
                                     {"TRACKNUMBER", number(tags.track)},
                                     {"COMPILATION", number(tags.compilation)}}) {
        if (!value.empty()) {
            properties.replace(key, TagLib::StringList(TagLib::String(value, TagLib::String::UTF8)));
        }
    }
    return properties;
}

}  // namespace

std::vector<std::uint8_t> EncodePng(const RgbImage& image) {
    png_image head{};
    head.version = PNG_IMAGE_VERSION;
    head.width = image.size.width;
    head.height = image.size.height;
    head.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_PNG_SIZE_MAX(head));
    png_alloc_size_t size = bytes.size();
    const bool isDone =
        png_image_write_to_memory(&head, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr) != 0;
    bytes.resize(isDone ? size : 0);
    return bytes;
}

bool WriteTags(const std::filesystem::path& path, const TrackTags& tags,
               std::span<const DemoPicture> pictures) {
    TagLib::FileRef file(path.c_str());
    if (file.isNull()) {
        return false;
    }
    file.file()->setProperties(PropertiesOf(tags));
    for (const DemoPicture& picture : pictures) {
        AddPicture(*file.file(), picture);
    }
    return file.save();
}

}  // namespace DeviceSimulator
