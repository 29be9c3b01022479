#include "Base/VideoPlayer/layout/Frames.h"

#include "tests/support/Views.h"

#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

namespace qoro
{

inline void PrintTo(VideoArea area, std::ostream* out)
{
    *out << area.across << " across, " << area.down << " down";
}

namespace
{

TEST(LayoutFrames, AScreenOf812PointsHasInsets)
{
    const ScreenInsets insets = screenInsets(CGSize{375, 812});
    EXPECT_EQ(insets.top, 44.0);
    EXPECT_EQ(insets.bottom, 34.0);
}

TEST(LayoutFrames, AScreenOf811OrOf812AndAHalfPointsHasNoInsets)
{
    EXPECT_EQ(screenInsets(CGSize{375, 811}).top, 0);
    EXPECT_EQ(screenInsets(CGSize{375, 811}).bottom, 0);
    EXPECT_EQ(screenInsets(CGSize{375, 812.5}).top, 0);
    EXPECT_EQ(screenInsets(CGSize{375, 812.5}).bottom, 0);
}

TEST(LayoutFrames, WithoutAScreenThereAreNoInsets)
{
    EXPECT_EQ(screenInsets(std::nullopt).top, 0);
    EXPECT_EQ(screenInsets(std::nullopt).bottom, 0);
}

TEST(LayoutFrames, TheBrandIconIsAWholeShareOfTheShortEdge)
{
    EXPECT_EQ(brandIconFrame(320, 568, 7.0), (CGRect{51, 0, 45, 45}));
    EXPECT_EQ(brandIconFrame(320, 568, 9.0), (CGRect{51, 0, 35, 35}));
    EXPECT_EQ(brandIconFrame(812, 375, 7.0), (CGRect{51, 0, 53, 53}));
}

TEST(LayoutFrames, TheBandKeepsTheVideosAspectRatio)
{
    EXPECT_EQ(bandHeight(375, 1280, 720), 210.9375F);
}

TEST(LayoutFrames, TheBandsRatioIsComputedFirstInSinglePrecision)
{
    // 250 in double precision, and in single precision with the product first.
    EXPECT_EQ(bandHeight(375, 720, 480), 249.999985F);
}

TEST(LayoutFrames, AVideoWithoutWidthHasABandOfUndefinedHeight)
{
    EXPECT_TRUE(std::isinf(bandHeight(375, 0, 720)));
    EXPECT_TRUE(std::isnan(bandHeight(0, 0, 720)));
}

// ---------------------------------------------------------------------------------------------------------- web view

/// A tall portrait screen with a 16:9 band whose lower edge is at 254.9375.
WebViewSurroundings tall_screen(ViewPosition position)
{
    return {true, position, 812, {44, 34}, 375, 210.9375, 254.9375};
}

TEST(LayoutFrames, BelowAVideoAtTheTopThePageTakesTheRest)
{
    EXPECT_EQ(webViewFrame(tall_screen(TOP)), (CGRect{0, 254.9375, 375, 523.0625}));
}

TEST(LayoutFrames, AboveAVideoAtTheBottomThePageTakesTheRest)
{
    EXPECT_EQ(webViewFrame(tall_screen(BOTTOM)), (CGRect{0, 44, 375, 523.0625}));
}

TEST(LayoutFrames, BehindAVideoInTheMiddleOrOverAllThePageFillsTheScreenWithinItsInsets)
{
    EXPECT_EQ(webViewFrame(tall_screen(MIDDLE)), (CGRect{0, 44, 375, 734}));
    EXPECT_EQ(webViewFrame(tall_screen(FULL)), (CGRect{0, 44, 375, 734}));
}

TEST(LayoutFrames, BesideAVideoAtASideOrAnywhereElseThePageIsAsHighAsTheVideo)
{
    EXPECT_EQ(webViewFrame(tall_screen(LEFT)), (CGRect{0, 44, 375, 210.9375}));
    EXPECT_EQ(webViewFrame(tall_screen(RIGHT)), (CGRect{0, 44, 375, 210.9375}));
    EXPECT_EQ(webViewFrame(tall_screen(ViewPosition{})), (CGRect{0, 44, 375, 210.9375}));
}

TEST(LayoutFrames, InLandscapeThePageIsAsLargeAsTheVideoAtAnyPosition)
{
    const WebViewSurroundings landscape{false, TOP, 812, {44, 34}, 375, 812, 812};
    EXPECT_EQ(webViewFrame(landscape), (CGRect{0, 44, 375, 812}));
}

// -------------------------------------------------------------------------------------------------------- video area

/// A portrait screen of 375 by 812 with a 16:9 video at the top; each test changes what it checks.
AreaConditions upright_screen()
{
    AreaConditions now;
    now.portraitNow = true;
    now.orientation = UIDeviceOrientationPortrait;
    now.videoPosition = TOP;
    now.videoWidth = 1280;
    now.videoHeight = 720;
    now.screenWidth = 375;
    now.screenHeight = 812;
    return now;
}

TEST(VideoAreaOf, ABandIsAcrossTheScreen)
{
    EXPECT_EQ(videoArea(upright_screen()), (VideoArea{375, 210.9375}));
}

TEST(VideoAreaOf, ABandOnATurnedScreenIsAcrossTheLongEdgeForAWideVideo)
{
    AreaConditions now = upright_screen();
    now.screenWidth = 812;
    now.screenHeight = 375;
    EXPECT_EQ(videoArea(now), (VideoArea{812, 812.0F / 1280.0F * 720.0F}));
}

TEST(VideoAreaOf, ABandOnATurnedScreenIsAcrossTheShortEdgeForATallVideo)
{
    AreaConditions now = upright_screen();
    now.screenWidth = 812;
    now.screenHeight = 375;
    now.videoWidth = 720;
    now.videoHeight = 1280;
    EXPECT_EQ(videoArea(now), (VideoArea{375, 375.0F / 720.0F * 1280.0F}));
}

TEST(VideoAreaOf, ASquareVideoCountsAsTall)
{
    AreaConditions now = upright_screen();
    now.screenWidth = 812;
    now.screenHeight = 375;
    now.videoWidth = 720;
    EXPECT_EQ(videoArea(now), (VideoArea{375, 375}));
}

TEST(VideoAreaOf, AFullPortraitVideoIsTheScreen)
{
    AreaConditions now = upright_screen();
    now.videoPosition = FULL;
    EXPECT_EQ(videoArea(now), (VideoArea{375, 812}));
}

TEST(VideoAreaOf, ALockedBandIsAcrossTheShortEdge)
{
    AreaConditions now = upright_screen();
    now.lockOneSide = true;
    now.screenWidth = 812;
    now.screenHeight = 375;
    EXPECT_EQ(videoArea(now), (VideoArea{375, 210.9375}));
}

TEST(VideoAreaOf, ALockedFullPortraitVideoIsAcrossTheShortEdge)
{
    AreaConditions now = upright_screen();
    now.lockOneSide = true;
    now.videoPosition = FULL;
    now.screenWidth = 812;
    now.screenHeight = 375;
    EXPECT_EQ(videoArea(now), (VideoArea{375, 375}));
}

TEST(VideoAreaOf, AHostLockedToLandscapeGivesTheScreenInEveryArrangement)
{
    AreaConditions now = upright_screen();
    now.lockOneSide = true;
    now.lockOneSideAndIsLandscape = true;
    now.moreThaniOS8 = true;
    now.screenWidth = 812;
    now.screenHeight = 375;
    EXPECT_EQ(videoArea(now), (VideoArea{812, 375}));
    now.portraitNow = false;
    now.orientation = UIDeviceOrientationLandscapeLeft;
    EXPECT_EQ(videoArea(now), (VideoArea{812, 375}));
}

TEST(VideoAreaOf, AHostLockedToLandscapeIsTheScreenOnlyWithAllThreeFlags)
{
    AreaConditions all = upright_screen();
    all.lockOneSide = true;
    all.lockOneSideAndIsLandscape = true;
    all.moreThaniOS8 = true;
    EXPECT_EQ(videoArea(all), (VideoArea{375, 812}));

    for (bool AreaConditions::*flag :
         {&AreaConditions::lockOneSide, &AreaConditions::lockOneSideAndIsLandscape, &AreaConditions::moreThaniOS8}) {
        AreaConditions without_one = all;
        without_one.*flag = false;
        EXPECT_EQ(videoArea(without_one), (VideoArea{375, 210.9375}));
    }
}

AreaConditions landscape_layout(std::int64_t orientation)
{
    AreaConditions now = upright_screen();
    now.portraitNow = false;
    now.fullScreen = true;
    now.orientation = orientation;
    return now;
}

TEST(VideoAreaOf, LandscapeOnAnUprightDeviceIsTurned)
{
    EXPECT_EQ(videoArea(landscape_layout(UIDeviceOrientationPortrait)), (VideoArea{812, 375}));
}

TEST(VideoAreaOf, LandscapeThatDoesNotFillTheScreenIsNotTurned)
{
    AreaConditions now = landscape_layout(UIDeviceOrientationPortrait);
    now.fullScreen = false;
    EXPECT_EQ(videoArea(now), (VideoArea{375, 812}));
}

TEST(VideoAreaOf, LandscapeOnADeviceHeldInLandscapeIsTheScreen)
{
    AreaConditions now = landscape_layout(UIDeviceOrientationLandscapeLeft);
    now.screenWidth = 812;
    now.screenHeight = 375;
    EXPECT_EQ(videoArea(now), (VideoArea{812, 375}));
}

TEST(VideoAreaOf, LandscapeOnADeviceUpsideDownIsTheScreen)
{
    EXPECT_EQ(videoArea(landscape_layout(UIDeviceOrientationPortraitUpsideDown)), (VideoArea{375, 812}));
}

AreaConditions locked_landscape_layout(std::int64_t orientation)
{
    AreaConditions now = landscape_layout(orientation);
    now.lockOneSide = true;
    now.fullScreen = false;
    return now;
}

TEST(VideoAreaOf, LockedLandscapeOnALandscapeDeviceIsTurnedFromIOS8On)
{
    for (const auto side : {UIDeviceOrientationLandscapeLeft, UIDeviceOrientationLandscapeRight}) {
        AreaConditions now = locked_landscape_layout(side);
        EXPECT_EQ(videoArea(now), (VideoArea{375, 812})) << side;
        now.moreThaniOS8 = true;
        EXPECT_EQ(videoArea(now), (VideoArea{812, 375})) << side;
    }
}

TEST(VideoAreaOf, LockedLandscapeOnAnUprightDeviceIsTurnedEitherWayUp)
{
    EXPECT_EQ(videoArea(locked_landscape_layout(UIDeviceOrientationPortrait)), (VideoArea{812, 375}));
    EXPECT_EQ(videoArea(locked_landscape_layout(UIDeviceOrientationPortraitUpsideDown)), (VideoArea{812, 375}));
}

TEST(VideoAreaOf, LockedLandscapeOnADeviceThatLiesFlatIsTheScreen)
{
    for (const auto flat : {UIDeviceOrientationUnknown, UIDeviceOrientationFaceUp, UIDeviceOrientationFaceDown})
        EXPECT_EQ(videoArea(locked_landscape_layout(flat)), (VideoArea{375, 812})) << flat;
}

// ------------------------------------------------------------------------------------------------------ action panel

TEST(ActionPanelOf, OneTitleIsRoundedUpAndRightAligned)
{
    const ActionPanel panel = titledPanel({80.3, 17.9}, std::nullopt, 375);
    EXPECT_EQ(panel.buttonOne, (CGRect{0, 8, 91, 18}));
    EXPECT_EQ(panel.panel, (CGRect{276, 3, 91, 28}));
}

TEST(ActionPanelOf, ANarrowerSecondTitleIsBelowAndRightAligned)
{
    const ActionPanel panel = titledPanel({80.3, 17.9}, CGSize{49.5, 20.5}, 375);
    EXPECT_EQ(panel.buttonOne, (CGRect{0, 8, 91, 18}));
    EXPECT_EQ(panel.buttonTwo, (CGRect{31, 39, 60, 18}));
    EXPECT_EQ(panel.panel, (CGRect{276, 3, 91, 56}));
}

TEST(ActionPanelOf, AWiderSecondTitleMakesThePanelWider)
{
    const ActionPanel panel = titledPanel({80.3, 17.9}, CGSize{120.2, 17.9}, 375);
    EXPECT_EQ(panel.buttonOne, (CGRect{40, 8, 91, 18}));
    EXPECT_EQ(panel.buttonTwo, (CGRect{0, 39, 131, 18}));
    EXPECT_EQ(panel.panel, (CGRect{236, 3, 131, 56}));
}

TEST(ActionPanelOf, ASecondTitleThatIsALittleWiderSticksOutToTheLeft)
{
    const ActionPanel panel = titledPanel({80.3, 17.9}, CGSize{91.0, 17.9}, 375);
    EXPECT_EQ(panel.buttonTwo, (CGRect{-10, 39, 101, 18}));
    EXPECT_EQ(panel.panel, (CGRect{276, 3, 91, 56}));
}

TEST(ActionPanelOf, PicturesKeepAMarginToTheLeftEdge)
{
    EXPECT_EQ(picturePanel({50, 50}, false, 50), (CGRect{60, 0, 60, 60}));
    EXPECT_EQ(picturePanel({50, 50}, true, 50), (CGRect{60, 0, 60, 115}));
}

TEST(ActionPanelOf, MissingPicturesLeaveTheMarginsAlone)
{
    EXPECT_EQ(picturePanel({0, 0}, false, 44), (CGRect{54, 0, 10, 10}));
    EXPECT_EQ(picturePanel({0, 0}, true, 44), (CGRect{54, 0, 10, 15}));
}

TEST(ActionPanelOf, SidewaysItIsAtTheEndOfTheLongEdge)
{
    EXPECT_EQ(sidewaysPanel({80.3, 17.9}, 812), (CGRect{716, 0, 91, 28}));
}

TEST(LayoutFrames, TheBrandTextBeginsAtAShareOfTheLongEdgeInSinglePrecision)
{
    // 139.285721 if computed in double precision and rounded at the end.
    EXPECT_EQ(brandTextX(480, 800), 139.285706F);
    EXPECT_EQ(brandTextX(800, 480), 139.285706F);
}

TEST(LayoutFrames, ControlsAreSmallerInLandscape)
{
    EXPECT_EQ(controlSize(true), 50.0);
    EXPECT_EQ(controlSize(false), 44.0);
}

TEST(VideoAreaOf, AFullVideoInLandscapeOnAnUprightDeviceIsTurned)
{
    AreaConditions now = upright_screen();
    now.portraitNow = false;
    now.videoPosition = FULL;
    now.fullScreen = true;

    const VideoArea area = videoArea(now);

    EXPECT_EQ(area.across, 812.0F);
    EXPECT_EQ(area.down, 375.0F);
}

TEST(LayoutFrames, AreEmptyWithoutMeasurements)
{
    EXPECT_EQ(webViewFrame({}), (CGRect{0, 0, 0, 0}));
    EXPECT_EQ(videoArea({}).across, 0);
    EXPECT_EQ(videoArea({}).down, 0);
    EXPECT_EQ(VideoArea{}.across, 0);
    EXPECT_EQ(VideoArea{}.down, 0);
    EXPECT_EQ(TitleSize{}.width, 0);
    EXPECT_EQ(TitleSize{}.height, 0);
}

} // namespace
} // namespace qoro
