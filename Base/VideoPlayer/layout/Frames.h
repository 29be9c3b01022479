#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Geometry.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>

// The arithmetic of the layouts, over plain values: points throughout. The controller's sizes are single precision,
// frames double.

namespace qoro
{

/// What texts over the video are measured in.
inline constexpr CGSize TextBox{296.0, 9999.0};

/// What a screen with a sensor housing and a home indicator keeps free.
struct ScreenInsets {
    double top = 0;
    double bottom = 0;
};

/// Only screens of exactly 812 points have insets.
inline ScreenInsets screenInsets(const std::optional<CGSize>& mainScreen)
{
    if (mainScreen && mainScreen->height == 812.0)
        return {44.0, 34.0};
    return {};
}

/// The brand icon at the top left: a square of whole points, a share of the screen's short edge.
/// @param divisor what share: 7 in the landscape layout, 9 in the portrait one
inline CGRect brandIconFrame(float screenWidth, float screenHeight, double divisor)
{
    const double side = truncated(std::min(screenHeight, screenWidth) / divisor);
    return {51.0, 0.0, side, side};
}

/// The middle of a view of the given extents, in its own coordinates.
inline CGPoint middleOf(const CGRect& frame)
{
    return {frame.width * 0.5, frame.height * 0.5};
}

// ------------------------------------------------------------------------------------------------- portrait layout

/// The video band's height: the video's aspect ratio across the screen. A video width of 0 makes it infinite or not a
/// number.
inline float bandHeight(float screenWidth, float videoWidth, float videoHeight)
{
    return videoHeight * (screenWidth / videoWidth);
}

/// What the web view's place follows from.
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

/// The side of the square buttons and the height of the bottom bar.
inline double controlSize(bool portraitNow)
{
    return portraitNow ? 50.0 : 44.0;
}

/// What the area of the video on the screen follows from.
struct AreaConditions {
    bool lockOneSide = false;
    bool lockOneSideAndIsLandscape = false;
    bool moreThaniOS8 = false;
    bool portraitNow = false;
    bool fullScreen = false;
    /// The device's at the start of the last layout.
    std::int64_t orientation = 0;
    ViewPosition videoPosition{};
    /// The video's own size; only its aspect ratio counts.
    float videoWidth = 0;
    float videoHeight = 0;
    /// The screen as it is turned now.
    float screenWidth = 0;
    float screenHeight = 0;
};

/// The extents across and down the video, as the viewer sees it.
struct VideoArea {
    float across = 0;
    float down = 0;
    friend bool operator==(const VideoArea&, const VideoArea&) = default;
};

inline VideoArea videoArea(const AreaConditions& now)
{
    const VideoArea upright{now.screenWidth, now.screenHeight};
    // Landscape content on a device that stands upright is turned, so the extents change places.
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

/// A title's measure, rounded up to whole points.
struct TitleSize {
    float width = 0;
    float height = 0;
};

inline TitleSize wholePoints(CGSize measured)
{
    return {std::ceil(static_cast<float>(measured.width)), std::ceil(static_cast<float>(measured.height))};
}

/// The action buttons, in the panel's coordinates, and their panel.
struct ActionPanel {
    CGRect buttonOne;
    /// Nothing of meaning for a single button.
    CGRect buttonTwo;
    CGRect panel;
};

/// A panel of titled buttons, one below the other at the right end of the video's area.
/// @param titleTwo the second title's measure; absent for a single button
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
        // The title as measured decides, not the button's width: a button a little wider sticks out to the left.
        if (titleTwo->width > width) {
            panelWidth = widthTwo;
            x = 0;
        }
        // The second button takes the first one's height.
        buttonTwo = {x, buttonOneY + height + 13.0, widthTwo, height};
        panelHeight = 2.0F * height + 20.0F;
    }
    return {{panelWidth - width, buttonOneY, width, height},
            buttonTwo,
            {areaWidth - panelWidth - 8.0, 3.0, panelWidth, panelHeight}};
}

/// The panel of buttons that are pictures; it stands off the left edge, not the right one.
/// @param buttonOne the first button's extents
inline CGRect picturePanel(CGSize buttonOne, bool twoButtons, double side)
{
    return {side + 10.0, 0, buttonOne.width + 10.0, twoButtons ? 2 * buttonOne.height + 15.0 : buttonOne.height + 10.0};
}

/// The panel over a full-screen portrait video that is seen sideways.
/// @param longEdge the extent that the picture's long edge runs along
inline CGRect sidewaysPanel(CGSize titleOne, double longEdge)
{
    const TitleSize title = wholePoints(titleOne);
    const double width = title.width + 10.0F;
    return {longEdge - width - 5.0, 0, width, title.height + 10.0F};
}

} // namespace qoro
