#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "platform/Platform.h"

#include <memory>

namespace qoro
{

/// An ad that starts by itself; in a default World it plays from 0.3 s on. The page is irrelevant.
inline std::shared_ptr<QoroVideoAd> playing_ad()
{
    auto ad = std::make_shared<QoroVideoAd>();
    ad->strVideoUrl = "http://ad/v.mp4";
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitModeType = VIDEO_AND_WEBVIEW;
    ad->portraitVideoPos = TOP;
    ad->bIsAutoStart = true;
    return ad;
}

/// The controller of the ad that is open, which its window retains; null without one.
inline std::shared_ptr<QoroVideoWebViewController> open_controller(Platform& platform)
{
    const PlatformScope scope(platform);
    for (const UIWindow& window : UIApplication::sharedApplication().windows())
        if (auto found = std::dynamic_pointer_cast<QoroVideoWebViewController>(window.rootViewController()))
            return found;
    return nullptr;
}

/// Taps a button of the open ad.
inline void tap_on(Platform& platform, UIButton QoroVideoWebViewController::*button)
{
    const auto held = open_controller(platform);
    platform.dispatch([&] { UIButton((*held).*button).sendTouchUpInside(); });
}

} // namespace qoro
