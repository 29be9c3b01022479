#pragma once

namespace qoro
{

/// Every text of the kit's own that the viewer reads or hears, as it is written before translation.
namespace screen_texts
{

inline constexpr const char* Store = "Store";
inline constexpr const char* PageDoesNotCome = "This page could not be loaded.";
inline constexpr const char* PageHasStopped = "This page has stopped working.";
inline constexpr const char* AddressCannotBeShown = "There is nothing that can be shown here.";

// Names of what only shows a picture.

inline constexpr const char* Back = "Back";
inline constexpr const char* Forward = "Forward";
inline constexpr const char* Reload = "Reload";
inline constexpr const char* Close = "Close";
inline constexpr const char* SafeConnection = "The connection is secure";
inline constexpr const char* UnsafeConnection = "The connection is not secure";
inline constexpr const char* Play = "Play";
inline constexpr const char* Pause = "Pause";
inline constexpr const char* Replay = "Play again";
inline constexpr const char* Mute = "Mute";
inline constexpr const char* FillScreen = "Full screen";
inline constexpr const char* LeaveFullScreen = "Leave full screen";
inline constexpr const char* HideVideo = "Hide the video";
inline constexpr const char* ShowVideo = "Show the video";
inline constexpr const char* ShowControls = "Show the controls";
inline constexpr const char* FirstOffer = "Learn more";
inline constexpr const char* SecondOffer = "Learn more, second offer";
inline constexpr const char* Video = "Video";
inline constexpr const char* AdPage = "Page of the ad";
inline constexpr const char* Loading = "Loading";
inline constexpr const char* SecondLeft = "Can be closed in %d second";
inline constexpr const char* SecondsLeft = "Can be closed in %d seconds";

} // namespace screen_texts

} // namespace qoro
