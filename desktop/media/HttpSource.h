#pragma once

#include "desktop/net/HttpReader.h"

#include <string>

typedef struct _GstElement GstElement;

namespace qoro
{

/// A GStreamer source element that reads a video from its server (HttpReader). Its error messages are readable by
/// people. It hides the address from other elements: a URI query returns "video:stream" followed by the file extension
/// (".mp4"), which GStreamer uses as a hint for the container format.
/// @param address http or https
/// @return a floating reference, as GStreamer's own constructors return
GstElement* make_http_source(const std::string& address, const HttpReader::Limits& limits);

} // namespace qoro
