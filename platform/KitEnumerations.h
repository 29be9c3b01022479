#pragma once

#include "platform/Export.h"

namespace QORO_EXPORT qoro
{

/// The kit's log levels. The misspelt name is part of the interface.
enum ZulixLogTag : int {
    ZulixLogTagOfDebug = 0,
    ZulixLogTagOfInfo = 1,
    ZulixLogTagOfWarnning = 2,
    ZulixLogTagOfError = 3,
    ZulixLogTagOfNote = 4,
};

/// When an impression is sent.
enum SendImpPolicy : int { CallShowFunc = 0, JsSide = 1, PageFinished = 2 };

/// The kinds of ads.
enum AdUnitType : int {
    UNKNOWN = 0,
    BANNER_AD = 1,
    INTERSTITIAL_AD = 2,
    IN_APP_WEBVIEW = 3,
    VIDEO_AD = 4,
    NATIVE_AD = 5,
    SPLASH_AD = 6,
};

} // namespace qoro
