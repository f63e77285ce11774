// Owners for what GStreamer and GLib hand out.
#pragma once

#include <gst/gst.h>

#include <memory>

struct GstObjectUnref {
    void operator()(void* object) const { gst_object_unref(object); }
};
/// One reference to a GstObject.
template <typename Object>
using GstObjectPtr = std::unique_ptr<Object, GstObjectUnref>;

struct GstCapsUnref {
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
};
using GstCapsPtr = std::unique_ptr<GstCaps, GstCapsUnref>;

struct GErrorFree {
    void operator()(GError* error) const { g_error_free(error); }
};
using GErrorPtr = std::unique_ptr<GError, GErrorFree>;

/// Takes the source off its main context as well.
struct GSourceRemove {
    void operator()(GSource* source) const {
        g_source_destroy(source);
        g_source_unref(source);
    }
};
using GSourcePtr = std::unique_ptr<GSource, GSourceRemove>;
