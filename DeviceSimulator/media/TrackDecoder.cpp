#include "DeviceSimulator/media/TrackDecoder.h"

#include <algorithm>
#include <utility>

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;

/// As long as this, decoding on is at least as quick as a seek.
constexpr std::int64_t kSeekBeyondSeconds = 2;
/// Of a file that neither decodes nor fails.
constexpr auto kPatience = 10s;
/// Between two looks at the clock.
constexpr int kMostPulls = 64;

// A picture in the file is not decoded.
constexpr const char* kPipeline =
    "filesrc name=source ! decodebin name=decoder caps=audio/x-raw expose-all-streams=false "
    "audioconvert name=entry ! audioresample ! appsink name=sink sync=false max-buffers=16 "
    "caps=audio/x-raw,format=S16LE,channels=2,layout=interleaved,rate=";

/// On one of GStreamer's threads. Of several streams the first one sounds; of files that have been joined one
/// comes when the other is over.
void Connect(GstElement*, GstPad* pad, GstElement* entry) {
    const Owned<GstPad> sink(gst_element_get_static_pad(entry, "sink"));
    if (gst_pad_is_linked(sink.get()) == FALSE) {
        gst_pad_link(pad, sink.get());
    }
}

}  // namespace

TrackDecoder::TrackDecoder(std::string file, std::uint32_t rate) : m_file(std::move(file)), m_rate(rate) {
    Build();
}

void TrackDecoder::Build() {
    m_isReady = false;
    m_isBroken = false;
    ExpectFrom(0);
    GError* error = nullptr;
    GstElement* const parsed = gst_parse_launch((kPipeline + std::to_string(m_rate)).c_str(), &error);
    const Owned<GError> problem(error);
    m_pipeline.reset(
        GST_ELEMENT(gst_object_ref_sink(parsed != nullptr ? parsed : gst_pipeline_new(nullptr))));
    m_bus.reset(gst_element_get_bus(m_pipeline.get()));
    if (problem) {
        Fail("GStreamer's base plugins are missing");
        return;
    }
    g_object_set(ElementOf(m_pipeline.get(), "source"), "location", m_file.c_str(), nullptr);
    g_signal_connect(ElementOf(m_pipeline.get(), "decoder"), "pad-added", G_CALLBACK(Connect),
                     ElementOf(m_pipeline.get(), "entry"));
    m_sink = ElementOf(m_pipeline.get(), "sink");
    gst_element_set_state(m_pipeline.get(), GST_STATE_PLAYING);
}

int TrackDecoder::MessageFd() const {
    GPollFD poll{};
    gst_bus_get_pollfd(m_bus.get(), &poll);
    return poll.fd;
}

void TrackDecoder::HandleMessages() {
    while (const Owned<GstMessage> message{gst_bus_pop(m_bus.get())}) {
        Handle(message.get());
    }
    if (!m_hasSound && Clock::now() - m_began > kPatience) {
        Fail("nothing comes out of the decoder");
    }
}

void TrackDecoder::Handle(GstMessage* message) {
    switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_ASYNC_DONE:
            m_isReady = true;
            m_hasSound = m_hasSound || Take("try-pull-preroll");
            if (m_seekLater) {
                Seek(*std::exchange(m_seekLater, std::nullopt));
            }
            break;
        case GST_MESSAGE_ERROR: {
            GError* error = nullptr;
            gst_message_parse_error(message, &error, nullptr);
            m_isBroken = true;
            FailIfSilent(Owned<GError>(error)->message);
            break;
        }
        case GST_MESSAGE_EOS:
            FailIfSilent("there is no sound in it");
            break;
        default:
            break;
    }
}

/// What has been decoded before a damaged place is played.
void TrackDecoder::FailIfSilent(std::string reason) {
    if (!m_hasSound && !Pull()) {
        Fail(std::move(reason));
    }
}

/// Forgets what has been decoded; what comes next is to begin about there.
void TrackDecoder::ExpectFrom(std::int64_t frame) {
    m_expected = frame;
    m_first.reset();
    m_frames.clear();
}

void TrackDecoder::Fail(std::string reason) {
    if (m_failure.empty()) {
        m_failure = std::move(reason);
    }
}

void TrackDecoder::GoTo(std::int64_t frame) {
    const std::int64_t first = m_first.value_or(m_expected);
    const std::int64_t end = first + static_cast<std::int64_t>(m_frames.size());
    const bool isNear = frame >= first && frame < end + kSeekBeyondSeconds * m_rate;
    if (isNear && !m_seekLater) {
        return;
    }
    if (m_isReady) {
        Seek(frame);
    } else {
        m_seekLater = frame;
    }
}

void TrackDecoder::Seek(std::int64_t frame) {
    const auto time = gst_util_uint64_scale(static_cast<guint64>(frame), GST_SECOND, m_rate);
    const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    if (!m_isBroken && gst_element_seek_simple(m_pipeline.get(), GST_FORMAT_TIME, flags,
                                               static_cast<gint64>(time)) != FALSE) {
        ExpectFrom(frame);
    } else if (frame < m_first.value_or(m_expected)) {
        Build();  // what cannot seek begins anew
    }
}

std::span<const SoundFrame> TrackDecoder::Frames(std::int64_t from, std::size_t most) {
    for (int pulls = 0; pulls < kMostPulls; ++pulls) {
        const auto before = static_cast<std::ptrdiff_t>(
            std::clamp<std::int64_t>(from - m_first.value_or(from), 0, std::ssize(m_frames)));
        m_frames.erase(m_frames.begin(), m_frames.begin() + before);
        if (m_first) {
            *m_first += before;
        }
        if (m_frames.size() >= most || !Pull()) {
            break;
        }
    }
    return m_first == from ? std::span<const SoundFrame>(m_frames).first(std::min(most, m_frames.size()))
                           : std::span<const SoundFrame>();
}

bool TrackDecoder::Pull() {
    const auto sample = m_failure.empty() ? Take("try-pull-sample") : nullptr;
    if (!sample) {
        return false;
    }
    m_hasSound = true;
    GstBuffer* const buffer = gst_sample_get_buffer(sample.get());
    if (!m_first) {
        const guint64 time = gst_segment_to_stream_time(gst_sample_get_segment(sample.get()), GST_FORMAT_TIME,
                                                        GST_BUFFER_PTS(buffer));
        m_first = time == GST_CLOCK_TIME_NONE
                      ? 0
                      : static_cast<std::int64_t>(gst_util_uint64_scale_round(time, m_rate, GST_SECOND));
    }
    const std::size_t old = m_frames.size();
    const std::size_t count = gst_buffer_get_size(buffer) / sizeof(SoundFrame);
    m_frames.resize(old + count);
    gst_buffer_extract(buffer, 0, m_frames.data() + old, count * sizeof(SoundFrame));
    return true;
}

/// What the sink has at this moment, by a signal of its; null for nothing.
Owned<GstSample> TrackDecoder::Take(const char* signal) const {
    GstSample* sample = nullptr;
    g_signal_emit_by_name(m_sink, signal, GstClockTime{0}, &sample);
    return Owned<GstSample>(sample);
}

}  // namespace DeviceSimulator
