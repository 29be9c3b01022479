#pragma once

#include <string>

typedef struct _GstElement GstElement;

namespace qoro
{

/// A source of GStreamer's that reads a video from its server (HttpReader). What it fails with is in words a person
/// understands.
/// @param address of http or https
/// @return floating, as GStreamer's own are
GstElement* make_http_source(const std::string& address);

} // namespace qoro
