#include "DeviceSimulator/tools/ToneFile.h"

#include <array>
#include <string_view>

#include "DeviceSimulator/media/GstreamerOwned.h"

namespace DeviceSimulator {

namespace {

struct Encoder {
    std::string_view extension;
    std::string_view pipeline;
    bool choosesRate = false;  ///< by itself, unless it is told
};

constexpr std::array<Encoder, 5> kEncoders{{
    {".mp3", "lamemp3enc target=bitrate bitrate=64 cbr=true encoding-engine-quality=fast ! audio/mpeg", true},
    {".flac", "flacenc"},
    {".ogg", "vorbisenc quality=0.1 ! oggmux"},
    {".opus", "opusenc bitrate=48000 complexity=0 ! oggmux"},
    {".m4a", "avenc_aac bitrate=64000 ! mp4mux"},
}};

/// The tones that are still to come. On the source's thread once that runs.
struct Tuning {
    GstElement* source = nullptr;
    std::span<const double> left;

    void SetNext() {
        if (!left.empty()) {
            g_object_set(source, "freq", left.front(), nullptr);
            left = left.subspan(1);
        }
    }
};

/// Runs to the end; what is wrong, or nothing.
std::string Run(GstElement* pipeline) {
    constexpr GstClockTime kPatience = 60 * GST_SECOND;
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const Owned<GstBus> bus(gst_element_get_bus(pipeline));
    const Owned<GstMessage> message(gst_bus_timed_pop_filtered(
        bus.get(), kPatience, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    if (!message) {
        return "the encoder does not come to an end";
    }
    if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS) {
        return {};
    }
    GError* error = nullptr;
    gst_message_parse_error(message.get(), &error, nullptr);
    return Owned<GError>(error)->message;
}

/// `encoder`: a pipeline between the sound and the file.
std::string Encode(const std::string& encoder, const std::filesystem::path& path, std::uint32_t rate,
                   std::span<const double> hertz, std::uint32_t frames) {
    gst_init(nullptr, nullptr);
    // A tone is a buffer.
    const std::string description =
        "audiotestsrc name=source volume=0.25 num-buffers=" + std::to_string(hertz.size()) +
        " samplesperbuffer=" + std::to_string(frames) +
        " ! audio/x-raw,format=S16LE,channels=2,rate=" + std::to_string(rate) + " ! audioconvert ! " +
        encoder + " ! filesink name=sink";
    // Ogg streams are numbered by chance: the same chance each time makes the same file.
    g_random_set_seed(rate);
    Tuning tuning{};  // outlives the pipeline, whose thread uses it
    GError* error = nullptr;
    const Owned<GstElement> pipeline(gst_parse_launch(description.c_str(), &error));
    if (const Owned<GError> problem(error); problem || !pipeline) {
        return problem ? problem->message : "unknown error";
    }
    g_object_set(ElementOf(pipeline.get(), "sink"), "location", path.c_str(), nullptr);
    tuning = {ElementOf(pipeline.get(), "source"), hertz};
    tuning.SetNext();
    GstPad* const pad = gst_element_get_static_pad(tuning.source, "src");
    const auto retune = [](GstPad*, GstPadProbeInfo*, gpointer data) {
        static_cast<Tuning*>(data)->SetNext();
        return GST_PAD_PROBE_OK;
    };
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, retune, &tuning, nullptr);
    gst_object_unref(pad);
    return Run(pipeline.get());
}

}  // namespace

std::string WriteToneFile(const std::filesystem::path& path, std::uint32_t rate,
                          std::span<const double> hertz, std::uint32_t frames) {
    std::string problem = "no encoder for " + path.extension().string();
    for (const Encoder& encoder : kEncoders) {
        if (path.extension() == encoder.extension) {
            const std::string caps = encoder.choosesRate ? ",rate=" + std::to_string(rate) : "";
            problem = Encode(std::string(encoder.pipeline) + caps, path, rate, hertz, frames);
        }
    }
    return problem.empty() ? problem : "Cannot write " + path.string() + ": " + problem;
}

}  // namespace DeviceSimulator
