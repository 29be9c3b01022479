// Written by tools/draw_control_images.py: change the drawings in Base/VideoPlayer/artwork, then run it again.
#pragma once

namespace qoro
{

// Each array is a complete PNG file (8 bits per channel, RGBA) and is passed with its whole length.

/// Close button of the size `BIG`. 140 x 140 pixels.
extern const unsigned char arrayVideoBigCloseButton[2808];

/// Close button, default and small size. 60 x 60 pixels.
extern const unsigned char arrayVideoCloseButton[681];

/// Screen-scale button in portrait: go to full screen. 60 x 60 pixels.
extern const unsigned char arrayVideoFullscreenButton[650];

/// Play/pause button while the video plays. 160 x 160 pixels.
extern const unsigned char arrayVideoPauseButton[4614];

/// Play/pause button while the video is paused, and at first. 160 x 160 pixels.
extern const unsigned char arrayVideoPlayButton[6483];

/// Replay button. 160 x 160 pixels.
extern const unsigned char arrayVideoReplayButton[8749];

/// Mute button while the sound is off, and at first. 60 x 60 pixels.
extern const unsigned char arrayVideoSoundOffButton[1367];

/// Mute button while the sound is on. 60 x 60 pixels.
extern const unsigned char arrayVideoSounOnButton[1180];

/// Shade behind the top control bar; stretched to the bar's width. 5 x 60 pixels.
extern const unsigned char arrayTopBackGround[332];

/// Screen-scale button in landscape: back to portrait. 60 x 60 pixels.
extern const unsigned char arrayVideoScaleToPortraitButton[680];

/// Shade behind the bottom control bar; stretched to the bar's width. 5 x 60 pixels.
extern const unsigned char arrayBottomBackGround[332];

/// Close button while it serves to hide the video. 160 x 160 pixels.
extern const unsigned char arrayHideVideo[2418];

/// Button that shows the hidden video again. 160 x 160 pixels.
extern const unsigned char arrayShowVideo[2510];

} // namespace qoro
