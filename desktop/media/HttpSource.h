#pragma once

#include "desktop/net/HttpReader.h"

#include <string>

typedef struct _GstElement GstElement;

namespace qoro
{

/// A source of GStreamer's that reads a video from its server (HttpReader). What it fails with is in words a person
/// understands. It keeps its address to itself: asked for it, it answers with "video:stream" and the ending of the
/// file's name (".mp4"), which says what GStreamer takes the video for first.
/// @param address of http or https
/// @return floating, as GStreamer's own are
GstElement* make_http_source(const std::string& address, const HttpReader::Limits& limits);

} // namespace qoro
