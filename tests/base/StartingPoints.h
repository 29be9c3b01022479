#pragma once

#include "tests/support/AdSession.h"

namespace qoro
{

// The worlds, hosts and ads with which the tests of several files begin, and what they look for in a transcript.

/// The line of each layout.
constexpr const char* LandscapeLayout = R"(js video_orientation {"orientation":"landscape"} 0)";
constexpr const char* PortraitLayout = R"(js video_orientation {"orientation":"portrait"} 0)";

// -------------------------------------------------------------------------------------------------- worlds and hosts

/// A world whose screen has a size in points.
inline World screen_of(double width, double height)
{
    World world = AdSession::manual_world();
    world.device.facts.screen = CGSize{width, height};
    return world;
}

/// A host that turns with the device.
inline HostApp rotating_host()
{
    HostApp host;
    host.autorotates = {UIInterfaceOrientationPortrait, UIInterfaceOrientationLandscapeRight};
    return host;
}

/// A host in which another ad controller opens this one.
inline HostApp host_with_parent()
{
    HostApp host;
    host.parent = true;
    return host;
}

// ---------------------------------------------------------------------------------------------------------------- ads

inline void has_both_modes(AdSession& session)
{
    session.ad().portraitModeType = VIDEO_AND_WEBVIEW;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
}

/// An ad that can be held in landscape, where its close button hides the video.
inline void has_hide_button(AdSession& session)
{
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bShowHideVideoBtn = true;
}

/// Held in landscape, with a close button that hides the video.
inline void show_hide_button(AdSession& session)
{
    has_hide_button(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);
}

/// An ad that asks for every state's trackers.
inline void track(AdSession& session)
{
    session.ad().arrayPauseTrackingUrls = NSArray::of_strings({"http://t/pause"});
    session.ad().arrayResumeTrackingUrls = NSArray::of_strings({"http://t/resume"});
    session.ad().dicTrackingUrls = {{"complete", NSArray::of_strings({"http://t/complete"})}};
}

/// An ad that plays, what led there forgotten.
inline void play(AdSession& session)
{
    session.open();
    session.plays();
    session.forget();
}

} // namespace qoro
