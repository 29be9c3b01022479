#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Geometry.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

// Layout arithmetic on plain values. All lengths are points. The controller's sizes are single precision, frames are
// double precision.

namespace qoro
{

/// Box in which texts over the video are measured.
inline constexpr CGSize TextBox{296.0, 9999.0};

/// Space that a sensor housing and a home indicator occupy.
struct ScreenInsets {
    double top = 0;
    double bottom = 0;
};

/// Insets of a screen: only a height of exactly 812 points has any. Absent means no screen.
inline ScreenInsets screenInsets(const std::optional<CGSize>& mainScreen)
{
    if (mainScreen && mainScreen->height == 812.0)
        return {44.0, 34.0};
    return {};
}

/// Frame of the brand icon at the top left: a square, truncated to whole points.
/// @param divisor of the screen's short edge: 7 in the landscape layout, 9 in the portrait one
inline CGRect brandIconFrame(float screenWidth, float screenHeight, double divisor)
{
    const double side = truncated(std::min(screenHeight, screenWidth) / divisor);
    return {51.0, 0.0, side, side};
}

/// Centre of a view with this frame, in the view's own coordinates.
inline CGPoint middleOf(const CGRect& frame)
{
    return {frame.width * 0.5, frame.height * 0.5};
}

// ------------------------------------------------------------------------------------------------- portrait layout

/// Height of the video band: the screen's width at the video's aspect ratio. Infinite or NaN for a video width of 0.
inline float bandHeight(float screenWidth, float videoWidth, float videoHeight)
{
    return videoHeight * (screenWidth / videoWidth);
}

/// Input of webViewFrame.
struct WebViewSurroundings {
    bool portraitNow = false;
    ViewPosition videoPosition{};
    double screenHeight = 0;
    ScreenInsets insets;
    /// The video's size on the screen.
    double videoWidth = 0;
    double videoHeight = 0;
    /// The bottom edge of the player's view.
    double playerBottom = 0;
};

/// Frame of the web view: the space that the video leaves in portrait, the video's size in landscape.
inline CGRect webViewFrame(const WebViewSurroundings& around)
{
    double y = around.insets.top;
    double height = around.videoHeight;
    if (around.portraitNow) {
        switch (around.videoPosition) {
        case TOP:
            y = around.playerBottom;
            height = around.screenHeight - y - around.insets.bottom;
            break;
        case BOTTOM:
            height = around.screenHeight - around.insets.top - around.insets.bottom - around.videoHeight;
            break;
        case MIDDLE:
        case FULL:
            height = around.screenHeight - around.insets.top - around.insets.bottom;
            break;
        case RIGHT:
        case LEFT:
            break;
        }
    }
    return {0, y, around.videoWidth, height};
}

// ----------------------------------------------------------------------------------------------------- button bar

/// Length of a square button's side; the bottom bar is equally high.
inline double controlSize(bool portraitNow)
{
    return portraitNow ? 50.0 : 44.0;
}

/// Input of videoArea.
struct AreaConditions {
    bool lockOneSide = false;
    bool lockOneSideAndIsLandscape = false;
    bool moreThaniOS8 = false;
    bool portraitNow = false;
    bool fullScreen = false;
    /// UIDeviceOrientation at the start of the last layout.
    std::int64_t orientation = 0;
    ViewPosition videoPosition{};
    /// The video's own size; only its aspect ratio counts.
    float videoWidth = 0;
    float videoHeight = 0;
    /// The screen in its current orientation.
    float screenWidth = 0;
    float screenHeight = 0;
};

/// Width and height of the video as the viewer sees it.
struct VideoArea {
    float across = 0;
    float down = 0;
    friend bool operator==(const VideoArea&, const VideoArea&) = default;
};

/// The part of the screen that the video and its control bars occupy.
inline VideoArea videoArea(const AreaConditions& now)
{
    const VideoArea upright{now.screenWidth, now.screenHeight};
    // Landscape content on an upright device is rotated, which swaps width and height.
    const VideoArea turned{now.screenHeight, now.screenWidth};
    const float shortEdge = std::min(now.screenWidth, now.screenHeight);

    if (now.lockOneSide && now.lockOneSideAndIsLandscape && now.moreThaniOS8)
        return upright;
    if (now.portraitNow && now.videoPosition == FULL)
        return {now.lockOneSide ? shortEdge : now.screenWidth, now.screenHeight};
    if (now.portraitNow) {
        const bool wholeWidth = !now.lockOneSide && now.videoWidth > now.videoHeight;
        const float across = wholeWidth ? now.screenWidth : shortEdge;
        return {across, across / now.videoWidth * now.videoHeight};
    }
    if (now.lockOneSide && isLandscape(now.orientation))
        return now.moreThaniOS8 ? turned : upright;
    const bool standing = now.orientation == UIDeviceOrientationPortrait;
    if (now.lockOneSide)
        return standing || now.orientation == UIDeviceOrientationPortraitUpsideDown ? turned : upright;
    return standing && now.fullScreen ? turned : upright;
}

/// x of the brand text.
inline float brandTextX(float screenWidth, float screenHeight)
{
    return std::max(screenWidth, screenHeight) / 7.0F + 25.0F;
}

/// Measured size of a title, rounded up to whole points.
struct TitleSize {
    float width = 0;
    float height = 0;
};

inline TitleSize wholePoints(CGSize measured)
{
    return {std::ceil(static_cast<float>(measured.width)), std::ceil(static_cast<float>(measured.height))};
}

/// Frames of the action buttons, in the panel's coordinates, and of their panel.
struct ActionPanel {
    CGRect buttonOne;
    /// Unspecified for a single button.
    CGRect buttonTwo;
    CGRect panel;
};

/// Panel of titled buttons, stacked at the right edge of the video's area.
/// @param titleTwo measured size of the second title; absent for a single button
inline ActionPanel titledPanel(CGSize titleOne, const std::optional<CGSize>& titleTwo, double areaWidth)
{
    const auto [textWidth, height] = wholePoints(titleOne);
    const double width = textWidth + 10.0F;
    constexpr double buttonOneY = 8.0;
    double panelWidth = width;
    double panelHeight = height + 10.0F;
    CGRect buttonTwo;
    if (titleTwo) {
        const double widthTwo = wholePoints(*titleTwo).width + 10.0F;
        double x = width - widthTwo;
        // Compares the unrounded title with the first button. A second button that is only slightly wider therefore
        // extends beyond the panel's left edge.
        if (titleTwo->width > width) {
            panelWidth = widthTwo;
            x = 0;
        }
        // Both buttons have the first one's height.
        buttonTwo = {x, buttonOneY + height + 13.0, widthTwo, height};
        panelHeight = 2.0F * height + 20.0F;
    }
    return {{panelWidth - width, buttonOneY, width, height},
            buttonTwo,
            {areaWidth - panelWidth - 8.0, 3.0, panelWidth, panelHeight}};
}

/// Panel of picture buttons; its offset is from the left edge, not from the right one.
/// @param buttonOne size of the first button
/// @param side see controlSize
inline CGRect picturePanel(CGSize buttonOne, bool twoButtons, double side)
{
    return {side + 10.0, 0, buttonOne.width + 10.0, twoButtons ? 2 * buttonOne.height + 15.0 : buttonOne.height + 10.0};
}

/// Panel over a full-screen portrait video that is seen sideways.
/// @param longEdge length of the video's long edge
inline CGRect sidewaysPanel(CGSize titleOne, double longEdge)
{
    const TitleSize title = wholePoints(titleOne);
    const double width = title.width + 10.0F;
    return {longEdge - width - 5.0, 0, width, title.height + 10.0F};
}

} // namespace qoro
