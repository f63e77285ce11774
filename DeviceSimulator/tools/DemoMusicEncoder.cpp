#include "DeviceSimulator/tools/DemoMusicEncoder.h"

#include <gst/gst.h>

#include <array>
#include <memory>

#include "DeviceSimulator/media/GstreamerOwned.h"

namespace DeviceSimulator {

namespace {

struct Encoder {
    std::string_view extension;
    std::string_view pipeline;
    std::string_view capsUpToRate = {};  ///< where the encoder would choose a rate by itself
};

constexpr std::array<Encoder, 5> kEncoders{{
    {".mp3", "lamemp3enc target=bitrate bitrate=64 cbr=true encoding-engine-quality=fast",
     "audio/mpeg,rate="},
    {".flac", "flacenc"},
    {".ogg", "vorbisenc quality=0.1 ! oggmux"},
    {".opus", "opusenc bitrate=48000 complexity=0 ! oggmux"},
    {".m4a", "avenc_aac bitrate=64000 ! mp4mux"},
}};

DemoError TextOf(GError* error, const std::filesystem::path& path) {
    const Owned<GError> owned(error);
    return "Cannot write " + path.string() + ": " + (owned ? owned->message : "unknown error");
}

/// One of the pipeline's elements; the caller owns the reference.
std::unique_ptr<GstElement, decltype(&gst_object_unref)> Named(GstElement* pipeline, const char* name) {
    return {gst_bin_get_by_name(GST_BIN(pipeline), name), gst_object_unref};
}

/// By appsrc's signals, which needs no further library.
void PushAll(GstElement* source, const std::vector<std::int16_t>& samples, std::uint32_t sampleRate) {
    const Owned<GstCaps> caps(gst_caps_new_simple(
        "audio/x-raw", "format", G_TYPE_STRING, "S16LE", "rate", G_TYPE_INT, static_cast<int>(sampleRate),
        "channels", G_TYPE_INT, 2, "layout", G_TYPE_STRING, "interleaved", nullptr));
    g_object_set(source, "caps", caps.get(), nullptr);
    const gsize bytes = samples.size() * sizeof samples.front();
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    gst_buffer_fill(buffer, 0, samples.data(), bytes);
    GST_BUFFER_PTS(buffer) = 0;
    GstFlowReturn flow = GST_FLOW_OK;
    g_signal_emit_by_name(source, "push-buffer", buffer, &flow);
    gst_buffer_unref(buffer);
    g_signal_emit_by_name(source, "end-of-stream", &flow);
}

DemoError WaitForEnd(GstElement* pipeline, const std::filesystem::path& path) {
    constexpr GstClockTime kPatience = 60 * GST_SECOND;
    const Owned<GstBus> bus(gst_element_get_bus(pipeline));
    const Owned<GstMessage> message(gst_bus_timed_pop_filtered(
        bus.get(), kPatience, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (!message) {
        return "Cannot write " + path.string() + ": the encoder does not come to an end";
    }
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS) {
        return {};
    }
    GError* error = nullptr;
    gst_message_parse_error(message.get(), &error, nullptr);
    return TextOf(error, path);
}

/// `encoder`: a pipeline between the sound and the file.
DemoError EncodeWith(std::string_view encoder, const std::filesystem::path& path,
                     const std::vector<std::int16_t>& samples, std::uint32_t sampleRate) {
    gst_init(nullptr, nullptr);
    const std::string description =
        "appsrc name=source format=time ! audioconvert ! " + std::string(encoder) + " ! filesink name=sink";
    // Ogg streams are numbered by chance: the same chance each time makes the same file.
    g_random_set_seed(sampleRate);
    GError* error = nullptr;
    const Owned<GstElement> pipeline(gst_parse_launch(description.c_str(), &error));
    if (!pipeline || error != nullptr) {
        return TextOf(error, path);
    }
    g_object_set(Named(pipeline.get(), "sink").get(), "location", path.c_str(), nullptr);
    const auto source = Named(pipeline.get(), "source");
    gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
    PushAll(source.get(), samples, sampleRate);
    return WaitForEnd(pipeline.get(), path);
}

}  // namespace

DemoError EncodeFile(const std::filesystem::path& path, const std::vector<std::int16_t>& samples,
                     std::uint32_t sampleRate) {
    for (const Encoder& encoder : kEncoders) {
        if (path.extension() == encoder.extension) {
            std::string pipeline(encoder.pipeline);
            if (!encoder.capsUpToRate.empty()) {
                pipeline += " ! " + std::string(encoder.capsUpToRate) + std::to_string(sampleRate);
            }
            return EncodeWith(pipeline, path, samples, sampleRate);
        }
    }
    return "Cannot write " + path.string() + ": no encoder for " + path.extension().string();
}

}  // namespace DeviceSimulator
