#pragma once

#include "desktop/media/LibavLibrary.h"

#include <gst/audio/audio.h>
#include <gst/gst.h>

namespace qoro
{

/// The form of decoded sound: 32-bit floats, interleaved.
/// @return false if the frame's is none that this program can play
bool describe_sound(GstAudioInfo& info, const AVFrame& frame);

/// The samples of a frame, in the order that the form states.
/// @param info as describe_sound() has made it for the frame
GstBuffer* buffer_of(const AVFrame& frame, const GstAudioInfo& info);

} // namespace qoro
