#pragma once

#include <string>

namespace qoro
{

/// Whether GStreamer has a demuxer, or a decoder of video, for a format on this machine. Any thread may call these
/// functions; the first call initialises GStreamer, which may read its registry of plugins.
/// @param caps as GStreamer writes them, such as "video/quicktime" or "video/x-h264"
/// @{
bool has_demuxer(const std::string& caps);
bool has_video_decoder(const std::string& caps);
/// @}

} // namespace qoro
