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

namespace DeviceSimulator {

namespace {

TagLib::ByteVector BytesOf(const DemoPicture& picture) {
    return {reinterpret_cast<const char*>(picture.bytes.data()),
            static_cast<unsigned int>(picture.bytes.size())};
}

bool IsJpeg(const DemoPicture& picture) {
    return !picture.bytes.empty() && picture.bytes.front() == 0xFF;
}

const char* MimeType(const DemoPicture& picture) {
    return IsJpeg(picture) ? "image/jpeg" : "image/png";
}

void AddTo(TagLib::ID3v2::Tag& tag, const DemoPicture& picture) {
    using Frame = TagLib::ID3v2::AttachedPictureFrame;
    auto frame = std::make_unique<Frame>();
    frame->setMimeType(MimeType(picture));
    frame->setType(picture.isFront ? Frame::FrontCover : Frame::BackCover);
    frame->setPicture(BytesOf(picture));
    tag.addFrame(frame.release());  // the tag owns it
}

/// The caller hands it to what owns it.
std::unique_ptr<TagLib::FLAC::Picture> FlacPicture(const DemoPicture& picture) {
    auto block = std::make_unique<TagLib::FLAC::Picture>();
    block->setMimeType(MimeType(picture));
    block->setType(picture.isFront ? TagLib::FLAC::Picture::FrontCover : TagLib::FLAC::Picture::BackCover);
    block->setData(BytesOf(picture));
    return block;
}

void AddTo(TagLib::MP4::Tag& tag, const DemoPicture& picture) {
    TagLib::MP4::CoverArtList covers = tag.item("covr").toCoverArtList();
    covers.append(
        {IsJpeg(picture) ? TagLib::MP4::CoverArt::JPEG : TagLib::MP4::CoverArt::PNG, BytesOf(picture)});
    tag.setItem("covr", covers);
}

void AddPicture(TagLib::File& file, const DemoPicture& picture) {
    if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) {
        AddTo(*mpeg->ID3v2Tag(true), picture);
    } else if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
        flac->addPicture(FlacPicture(picture).release());
    } else if (auto* xiph = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
        xiph->addPicture(FlacPicture(picture).release());
    } else if (auto* mp4 = dynamic_cast<TagLib::MP4::Tag*>(file.tag())) {
        AddTo(*mp4, picture);
    }
}

TagLib::PropertyMap PropertiesOf(const TrackTags& tags) {
    TagLib::PropertyMap properties;
    const auto set = [&properties](const char* key, const std::string& value) {
        if (!value.empty()) {
            properties.replace(key, TagLib::StringList(TagLib::String(value, TagLib::String::UTF8)));
        }
    };
    const auto number = [](std::uint32_t value) {
        return value == 0 ? std::string() : std::to_string(value);
    };
    set("TITLE", tags.title);
    set("ARTIST", tags.artist);
    set("ALBUM", tags.album);
    set("ALBUMARTIST", tags.albumArtist);
    set("GENRE", tags.genre);
    set("COMPOSER", tags.composer);
    set("DISCNUMBER", number(tags.disc));
    set("TRACKNUMBER", number(tags.track));
    set("COMPILATION", tags.compilation != 0 ? "1" : "");
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
