#pragma once

#include <cstdint>
#include <string>

typedef struct _GstElement GstElement;

namespace qoro
{

/// A source of GStreamer's that reads a video from its server (HttpReader). What it fails with is in words a person
/// understands.
/// @param address of http or https
/// @param most_bytes of a video; a larger one is refused
/// @return floating, as GStreamer's own are
GstElement* make_http_source(const std::string& address, std::uint64_t most_bytes);

} // namespace qoro
