#pragma once

#include "tests/support/AdSession.h"

namespace qoro
{

// Shared fixtures: worlds, hosts and ads, and lines expected in a transcript.

/// Transcript line of each layout.
constexpr const char* LandscapeLayout = R"(js video_orientation {"orientation":"landscape"} 0)";
constexpr const char* PortraitLayout = R"(js video_orientation {"orientation":"portrait"} 0)";

// -------------------------------------------------------------------------------------------------- worlds and hosts

/// A world whose screen has the given size in points.
inline World screen_of(double width, double height)
{
    World world = AdSession::manual_world();
    world.device.facts.screen = CGSize{width, height};
    return world;
}

/// A host that rotates with the device.
inline HostSetup rotating_host()
{
    HostSetup host = unguarded_host();
    host.autorotates = {UIInterfaceOrientationPortrait, UIInterfaceOrientationLandscapeRight};
    return host;
}

/// A host in which another ad controller opens the ad.
inline HostSetup host_with_parent()
{
    HostSetup host = unguarded_host();
    host.parent = true;
    return host;
}

// ---------------------------------------------------------------------------------------------------------------- ads

inline void has_both_modes(AdSession& session)
{
    session.ad().portraitModeType = VIDEO_AND_WEBVIEW;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
}

/// An ad with a landscape layout in which its close button hides the video.
inline void has_hide_button(AdSession& session)
{
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bShowHideVideoBtn = true;
}

/// In landscape, with a close button that hides the video.
inline void show_hide_button(AdSession& session)
{
    has_hide_button(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);
}

/// An ad with trackers for every state.
inline void track(AdSession& session)
{
    session.ad().arrayPauseTrackingUrls = NSArray::of_strings({"http://t/pause"});
    session.ad().arrayResumeTrackingUrls = NSArray::of_strings({"http://t/resume"});
    session.ad().dicTrackingUrls = {{"complete", NSArray::of_strings({"http://t/complete"})}};
}

/// A playing ad; the transcript so far is dropped.
inline void play(AdSession& session)
{
    session.open();
    session.plays();
    session.forget();
}

} // namespace qoro
