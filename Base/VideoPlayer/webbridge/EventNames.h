#pragma once

#include "platform/Value.h"

namespace qoro::event_names
{

// Names of script events that are sent often: made once.
inline const NSString VideoOrientation = "video_orientation";
inline const NSString VideoTimeUpdate = "video_timeupdate";
inline const NSString VideoVisibilityChange = "video_visibilitychange";

} // namespace qoro::event_names
