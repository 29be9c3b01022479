#pragma once

namespace qoro
{

/// Initialises GStreamer and adds this program's decoders to it, once. Any thread; the first call may read GStreamer's
/// registry of plugins.
void start_media_framework();

} // namespace qoro
