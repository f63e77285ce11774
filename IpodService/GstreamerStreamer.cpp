#include "IpodService/GstreamerStreamer.h"

#include <atomic>
#include <mutex>

#include "IpodService/GstreamerHandles.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr int kStereo = 2;
/// GST_RESOURCE_ERROR_READ: the capture device has gone.
constexpr int kDeviceGoneCode = 9;

// GLib hands a watch to the main loop under a lock that race detectors cannot see; this one they can.
std::atomic<u32> g_watchesPublished{0};

/// A new element named `name`, owned by `bin`; null when its plugin is not installed.
GstElement* AddElement(GstElement* bin, const char* factory, const char* name) {
    GstElement* element = gst_element_factory_make(factory, name);
    if (element == nullptr) {
        LOG_WARN("GStreamer has no element '%s': its plugin is not installed\n", factory);
        return nullptr;
    }
    gst_bin_add(GST_BIN(bin), element);
    return element;
}

bool LinkAtRate(GstElement* source, GstElement* sink, i32 sampleRate) {
    GstCapsPtr caps(gst_caps_new_simple("audio/x-raw-format", "rate", G_TYPE_INT, sampleRate, "channels",
                                        G_TYPE_INT, kStereo, nullptr));
    return source != nullptr && sink != nullptr &&
           gst_element_link_filtered(source, sink, caps.get()) != FALSE;
}

void Link(GstElement* source, GstElement* sink, i32 sampleRate) {
    if (sampleRate > 0) {
        if (LinkAtRate(source, sink, sampleRate)) {
            return;
        }
        LOG_WARN("!error! - could not link rate %d , doing backup linking \n", sampleRate);
    }
    if (source != nullptr && sink != nullptr) {
        gst_element_link_many(source, sink, nullptr);
    }
}

GstObjectPtr<GstElement> BuildPipeline(const std::string& device, i32 sampleRate) {
    GstElement* created = gst_pipeline_new("pipeline");
    if (created == nullptr) {
        return nullptr;
    }
    GstObjectPtr<GstElement> pipeline(GST_ELEMENT(gst_object_ref_sink(created)));

    GstElement* source = AddElement(created, "alsasrc", "source");
    if (source != nullptr) {
        g_object_set(source, "device", device.c_str(), nullptr);
    }
    GstElement* sink = AddElement(created, "alsasink", "sink");
    if (sink != nullptr) {
        g_object_set(sink, "sync", FALSE, nullptr);
    }
    Link(source, sink, sampleRate);
    return pipeline;
}

}  // namespace

/// The running pipeline and its bus watch. The watch holds a reference to this object and to nothing of the
/// streamer's, so that a message which is being dispatched when the streamer goes finds what it needs, and
/// finds it dropped.
class GstreamerStreamer::Pipeline {
  public:
    static std::shared_ptr<Pipeline> Play(GstObjectPtr<GstElement> element);

    void Drop();
    void SetState(GstState state);

  private:
    static gboolean OnBusMessage(GstBus* bus, GstMessage* message, gpointer watched);
    static GSourcePtr AttachWatch(const std::shared_ptr<Pipeline>& pipeline);

    void HandleError(GstMessage* message);
    void DropLocked();

    std::mutex m_mutex;
    GstObjectPtr<GstElement> m_element;  ///< guarded by m_mutex; null once dropped
    GSourcePtr m_watch;                  ///< guarded by m_mutex
};

std::shared_ptr<GstreamerStreamer::Pipeline> GstreamerStreamer::Pipeline::Play(
    GstObjectPtr<GstElement> element) {
    auto pipeline = std::make_shared<Pipeline>();
    std::lock_guard lock(pipeline->m_mutex);
    pipeline->m_element = std::move(element);
    pipeline->m_watch = AttachWatch(pipeline);
    gst_element_set_state(pipeline->m_element.get(), GST_STATE_PLAYING);
    return pipeline;
}

// The default main context is the main thread's whichever thread starts the stream.
GSourcePtr GstreamerStreamer::Pipeline::AttachWatch(const std::shared_ptr<Pipeline>& pipeline) {
    GstObjectPtr<GstBus> bus(gst_element_get_bus(pipeline->m_element.get()));
    GSourcePtr watch(gst_bus_create_watch(bus.get()));
    g_source_set_callback(watch.get(), G_SOURCE_FUNC(&Pipeline::OnBusMessage),
                          new std::shared_ptr<Pipeline>(pipeline),
                          [](gpointer watched) { delete static_cast<std::shared_ptr<Pipeline>*>(watched); });
    g_watchesPublished.fetch_add(1, std::memory_order_release);
    g_source_attach(watch.get(), nullptr);
    return watch;
}

void GstreamerStreamer::Pipeline::Drop() {
    std::lock_guard lock(m_mutex);
    DropLocked();
}

void GstreamerStreamer::Pipeline::DropLocked() {
    m_watch.reset();
    if (m_element) {
        gst_element_set_state(m_element.get(), GST_STATE_NULL);
    }
    m_element.reset();
}

void GstreamerStreamer::Pipeline::SetState(GstState state) {
    std::lock_guard lock(m_mutex);
    if (m_element) {
        gst_element_set_state(m_element.get(), state);
    }
}

gboolean GstreamerStreamer::Pipeline::OnBusMessage(GstBus*, GstMessage* message, gpointer watched) {
    g_watchesPublished.load(std::memory_order_acquire);
    Pipeline& pipeline = **static_cast<std::shared_ptr<Pipeline>*>(watched);
    std::lock_guard lock(pipeline.m_mutex);
    if (!pipeline.m_element) {
        return TRUE;
    }
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_EOS) {
        LOG_DEBUG("end-of-stream\n");
    } else if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        pipeline.HandleError(message);
    }
    return TRUE;
}

void GstreamerStreamer::Pipeline::HandleError(GstMessage* message) {
    GError* parsed = nullptr;
    gst_message_parse_error(message, &parsed, nullptr);
    GErrorPtr error(parsed);
    LOG_WARN("Error: %s - Code: %d\n", error->message, error->code);
    if (error->code == kDeviceGoneCode) {
        DropLocked();
    }
}

i32 GstreamerStreamer::StartPipeline(i32 sampleRate) {
    StopPipeline();
    // The first start may come before the main thread has got as far as this.
    gst_init_check(nullptr, nullptr, nullptr);
    if (GstObjectPtr<GstElement> element = BuildPipeline(m_device, sampleRate)) {
        m_pipeline = Pipeline::Play(std::move(element));
    }
    return 1;
}

void GstreamerStreamer::StopPipeline() {
    if (m_pipeline) {
        m_pipeline->Drop();
    }
    m_pipeline.reset();
}

void GstreamerStreamer::PausePipeline() {
    if (m_pipeline) {
        m_pipeline->SetState(GST_STATE_PAUSED);
    }
}

void GstreamerStreamer::PlayPipeline() {
    if (m_pipeline) {
        m_pipeline->SetState(GST_STATE_PLAYING);
    }
}
