#pragma once

#include <gst/gst.h>

#include <string_view>

namespace qoro
{

/// Media type of a stream ("video/x-h264"); empty if unknown.
inline std::string_view stream_kind(const GstCaps* caps)
{
    if (!caps || gst_caps_get_size(caps) == 0)
        return {};
    return gst_structure_get_name(gst_caps_get_structure(caps, 0));
}

} // namespace qoro
