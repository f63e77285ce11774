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
    void operator()(GstPad* pad) const { gst_object_unref(pad); }
    void operator()(GstBus* bus) const { gst_object_unref(bus); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GError* error) const { g_error_free(error); }
};
template <typename T>
using Owned = std::unique_ptr<T, GstreamerUnref>;

}  // namespace DeviceSimulator
