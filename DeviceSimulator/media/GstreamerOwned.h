// Owners for what GStreamer hands out.
#pragma once

#include <gst/gst.h>

#include <memory>

namespace DeviceSimulator {

struct GstreamerUnref {
    /// Stops it first; for an element that is in nothing else.
    void operator()(GstElement* element) const {
        gst_element_set_state(element, GST_STATE_NULL);
        gst_object_unref(element);
    }
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    void operator()(GstPad* pad) const { gst_object_unref(pad); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GError* error) const { g_error_free(error); }
};
template <typename T>
using Owned = std::unique_ptr<T, GstreamerUnref>;

/// Of that name in `pipeline`, which keeps it.
inline GstElement* ElementOf(GstElement* pipeline, const char* name) {
    GstElement* const element = gst_bin_get_by_name(GST_BIN(pipeline), name);
    gst_object_unref(element);
    return element;
}

}  // namespace DeviceSimulator
