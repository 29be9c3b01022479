#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "tests/support/AdSession.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

#include <limits>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

/// In landscape, with a page behind the video and buttons to switch between them.
void open_landscape_over_page(AdSession& session)
{
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().bShowHideVideoBtn = true;
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session.open();
}

/// A full-screen portrait video with a page behind it.
void open_full_over_page(AdSession& session)
{
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().portraitVideoPos = FULL;
    session.open();
}

// ---------------------------------------------------------------------------------------------------- visibility rule

TEST(VideoMayBeHidden, InLandscapeOverAPage)
{
    AdSession session;
    open_landscape_over_page(session);

    EXPECT_TRUE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, InPortraitWhenItFillsTheScreenOverAPage)
{
    AdSession session;
    open_full_over_page(session);

    EXPECT_TRUE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, InAnArrangementWithAPageInWhichItIsNotHiddenYet)
{
    struct Rule {
        VideoAdMode landscape;
        bool hidden_in_landscape;
        VideoAdMode portrait;
        bool hidden_in_portrait;
        ViewPosition position;
        bool may_be_hidden;
    };
    constexpr Rule rules[] = {
        {VIDEO_AND_WEBVIEW, false, ONLY_VIDEO, false, TOP, true},
        {VIDEO_AND_WEBVIEW, true, ONLY_VIDEO, false, FULL, false},
        {VIDEO_AND_WEBVIEW, false, ONLY_VIDEO, true, FULL, true},
        {VIDEO_AND_WEBVIEW, false, VIDEO_AND_WEBVIEW, false, TOP, true},
        {VIDEO_AND_WEBVIEW, true, VIDEO_AND_WEBVIEW, false, TOP, false},
        {VIDEO_AND_WEBVIEW, true, VIDEO_AND_WEBVIEW, false, FULL, true},
        {VIDEO_AND_WEBVIEW, true, VIDEO_AND_WEBVIEW, true, FULL, false},
        {ONLY_VIDEO, false, VIDEO_AND_WEBVIEW, false, FULL, true},
        {ONLY_VIDEO, false, VIDEO_AND_WEBVIEW, false, BOTTOM, false},
        {ONLY_VIDEO, false, VIDEO_AND_WEBVIEW, true, FULL, false},
        {ONLY_VIDEO, false, ONLY_VIDEO, false, FULL, false},
    };
    AdSession session;
    session.open();
    session->bIsFullScreen = true;
    for (const Rule& rule : rules) {
        SCOPED_TRACE(&rule - rules);
        session.ad().landscapeModeType = rule.landscape;
        session->bHideVideoToShowWebViewInLandscapeMode = rule.hidden_in_landscape;
        session.ad().portraitModeType = rule.portrait;
        session->bHideVideoToShowWebViewInPortraitMode = rule.hidden_in_portrait;
        session.ad().portraitVideoPos = rule.position;

        EXPECT_EQ(session->checkVideoNeedToHide(), rule.may_be_hidden);
    }
}

TEST(VideoMayBeHidden, NotUnderAPageInFront)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().bIsWebViewInFront = true;

    EXPECT_FALSE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, NotUnlessItFillsTheScreen)
{
    AdSession session;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.open();

    EXPECT_FALSE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, NotTwice)
{
    AdSession session;
    open_landscape_over_page(session);
    session->qoroMoviePlayer.view().setHidden(true);

    EXPECT_FALSE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, NotWhileTheHiddenImageShows)
{
    AdSession session;
    open_landscape_over_page(session);
    session->miImageView.setHidden(false);

    EXPECT_FALSE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, NotOnceHiddenInLandscape)
{
    AdSession session;
    open_landscape_over_page(session);
    session->bHideVideoToShowWebViewInLandscapeMode = true;

    EXPECT_FALSE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, ByTheLandscapeModeAloneOnceHiddenInPortrait)
{
    AdSession session;
    open_full_over_page(session);
    session->bHideVideoToShowWebViewInPortraitMode = true;

    EXPECT_FALSE(session->checkVideoNeedToHide());
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    EXPECT_TRUE(session->checkVideoNeedToHide());
}

TEST(VideoMayBeHidden, NotOverNoPageAtAll)
{
    AdSession session;
    session.ad().portraitModeType = ONLY_VIDEO;
    session.ad().portraitVideoPos = FULL;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();

    EXPECT_FALSE(session->checkVideoNeedToHide());
}

// ------------------------------------------------------------------------------------------------ hiding and showing

TEST(HidingTheVideo, PausesItAndNotifiesTheScript)
{
    AdSession session;
    open_landscape_over_page(session);
    session.plays();
    session.forget();

    session->setVideoInvisible();

    EXPECT_THAT(session.transcript(),
                ElementsAre("player pause", R"(js video_visibilitychange {"e":{"visibility":0}} 0)"));
    EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden());
}

TEST(HidingTheVideo, MovesTheCloseButtonOntoThePage)
{
    AdSession session;
    open_landscape_over_page(session);

    session->setVideoInvisible();

    EXPECT_TRUE(session->btnClose.superview() == session->webView());
    EXPECT_EQ(session->btnClose.frame(), (CGRect{0, 0, 50, 50}));
}

TEST(HidingTheVideo, OffersTheReturnButtonInLandscape)
{
    AdSession session;
    open_landscape_over_page(session);
    session->btnReturnToVideo.setHidden(true);

    session->setVideoInvisible();

    EXPECT_FALSE(session->btnReturnToVideo.isHidden());
    EXPECT_TRUE(session->bHideVideoToShowWebViewInLandscapeMode);
    EXPECT_FALSE(session->bHideVideoToShowWebViewInPortraitMode);
}

TEST(HidingTheVideo, OffersNoReturnButtonUnlessTheAdWantsIt)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().bShowHideVideoBtn = false;
    session->btnReturnToVideo.setHidden(true);

    session->setVideoInvisible();

    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
    EXPECT_TRUE(session->bHideVideoToShowWebViewInLandscapeMode);
}

TEST(HidingTheVideo, IsRememberedForPortraitWhenTheVideoIsFull)
{
    AdSession session;
    open_full_over_page(session);

    session->setVideoInvisible();

    EXPECT_TRUE(session->bHideVideoToShowWebViewInPortraitMode);
    EXPECT_FALSE(session->bHideVideoToShowWebViewInLandscapeMode);
}

TEST(HidingTheVideo, IsRememberedForPortraitWhateverThePortraitMode)
{
    AdSession session;
    session.ad().portraitModeType = ONLY_VIDEO;
    session.ad().portraitVideoPos = FULL;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.open();

    session->setVideoInvisible();

    EXPECT_TRUE(session->bHideVideoToShowWebViewInPortraitMode);
}

TEST(HidingTheVideo, DoesNothingUnderAPageInFront)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().bIsWebViewInFront = true;
    session.forget();

    session->setVideoInvisible();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
}

TEST(HidingTheVideo, DoesNothingWhileTheHiddenImageShows)
{
    AdSession session;
    open_landscape_over_page(session);
    session->miImageView.setHidden(false);
    session.forget();

    session->setVideoInvisible();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
}

TEST(HidingTheVideo, DoesNothingToABand)
{
    AdSession session;
    session.open();
    session.forget();

    session->setVideoInvisible();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
}

TEST(ShowingTheVideo, HidesTheReturnButtonAndNotifiesTheScript)
{
    AdSession session;
    open_landscape_over_page(session);
    session->setVideoInvisible();
    session.forget();

    session.tap(session->btnReturnToVideo);

    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_visibilitychange {"e":{"visibility":1}} 0)"));
    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_TRUE(session->btnReturnToVideo.isHidden());
    EXPECT_FALSE(session->bHideVideoToShowWebViewInLandscapeMode);
    EXPECT_TRUE(session->btnClose.superview() == session->qoroMoviePlayer.view());
}

TEST(ShowingTheVideo, LeavesTheReturnButtonAloneUnlessTheAdWantsIt)
{
    AdSession session;
    open_landscape_over_page(session);
    session->setVideoInvisible();
    session.ad().bShowHideVideoBtn = false;

    session->setVideoVisible();

    EXPECT_FALSE(session->btnReturnToVideo.isHidden());
    EXPECT_FALSE(session->bHideVideoToShowWebViewInLandscapeMode);
}

TEST(ShowingTheVideo, RestoresTheCloseButtonsPicture)
{
    AdSession session;
    open_landscape_over_page(session);
    session->setVideoInvisible();
    EXPECT_EQ(picture_of(session->btnClose), arrayVideoCloseButton);

    session->setVideoVisible();

    EXPECT_EQ(picture_of(session->btnClose), arrayHideVideo);
}

TEST(ShowingTheVideo, WithoutAPlayerTakesTheCloseButtonOffThePage)
{
    AdSession session;
    open_landscape_over_page(session);
    session->setVideoInvisible();
    session->setQoroMoviePlayer(nullptr);
    session.ad().landscapeModeType = ONLY_VIDEO;

    session->setVideoVisible();

    EXPECT_FALSE(session->btnClose.superview());
}

TEST(ShowingTheVideo, DoesNothingToAVideoThatMayBeHidden)
{
    AdSession session;
    open_landscape_over_page(session);
    session.forget();

    session->setVideoVisible();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(ShowingTheVideo, ActsUnderAPageInFront)
{
    AdSession session;
    open_landscape_over_page(session);
    session.ad().bIsWebViewInFront = true;
    session->qoroMoviePlayer.view().setHidden(true);
    session->btnReturnToVideo.setHidden(false);
    session.forget();

    session->setVideoVisible();

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_FALSE(session->btnReturnToVideo.isHidden());
    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_visibilitychange {"e":{"visibility":1}} 0)"));
}

TEST(ShowingTheVideo, LeavesTheCloseButtonOfABandWhereItIs)
{
    AdSession session;
    session.ad().portraitVideoPos = BOTTOM;
    session.open();

    session->setVideoVisible();

    EXPECT_TRUE(session->btnClose.superview() == session->webView());
}

TEST(ShowingTheVideo, ForgetsThePortraitHidingOnlyOverAPage)
{
    AdSession session;
    open_full_over_page(session);
    session->setVideoInvisible();

    session.ad().portraitModeType = ONLY_VIDEO;
    session->setVideoVisible();
    EXPECT_TRUE(session->bHideVideoToShowWebViewInPortraitMode);

    session.ad().portraitModeType = VIDEO_AND_WEBVIEW;
    session->setVideoVisible();
    EXPECT_FALSE(session->bHideVideoToShowWebViewInPortraitMode);
}

TEST(HiddenVideo, StaysHiddenThroughANewLayout)
{
    AdSession session;
    open_landscape_over_page(session);
    session->setVideoInvisible();

    session->checkVideoSize();

    EXPECT_TRUE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_TRUE(session->bHideVideoToShowWebViewInLandscapeMode);
}

TEST(HiddenVideo, IsStillRememberedAfterAReload)
{
    AdSession session;
    open_landscape_over_page(session);
    session->setVideoInvisible();

    session->reloadVideo();

    EXPECT_TRUE(session->bHideVideoToShowWebViewInLandscapeMode);
}

// ------------------------------------------------------------------------------------------------- scale and spinner

TEST(ScreenScale, SwitchesToLandscapeAndBack)
{
    AdSession session;
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();

    session.tap(session->btnScreenScale);
    EXPECT_FALSE(session->bIsPortraitNow);
    EXPECT_TRUE(session->bIsFullScreen);

    session.tap(session->btnScreenScale);
    EXPECT_TRUE(session->bIsPortraitNow);
    EXPECT_FALSE(session->bIsFullScreen);
}

TEST(ScreenScale, TheReturnToPortraitReportsTheVideoAsVisibleToTheScript)
{
    AdSession session;
    open_landscape_over_page(session);
    session.forget();

    session.tap(session->btnScreenScale);

    EXPECT_EQ(session.count_of(R"(js video_visibilitychange {"e":{"visibility":1}} 0)"), 1U);
}

TEST(ScreenScale, AFullPortraitVideoStaysFullScreen)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();

    session.tap(session->btnScreenScale);

    EXPECT_TRUE(session->bIsPortraitNow);
    EXPECT_TRUE(session->bIsFullScreen);
}

TEST(Spinner, IsCentredOnTheVideoInWholePoints)
{
    AdSession session;
    session.open();
    session.forget();

    session->showVideoProgressbar();

    EXPECT_THAT(session.transcript(), ElementsAre("super showProgressbar 167 85"));
}

TEST(Spinner, IsNotShownAnyMoreOnceTheVideoHasPlayed)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session->showVideoProgressbar();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(Spinner, AVideoWithoutAHeightHasItAtTheTop)
{
    AdSession session;
    session.open();
    session->fVideoHeight = std::numeric_limits<float>::quiet_NaN();
    session.forget();

    session->showVideoProgressbar();

    EXPECT_THAT(session.transcript(), ElementsAre("super showProgressbar 167 0"));
}

TEST(ShowingTheVideo, LeavesThePortraitFlagOfAVideoThatIsNotFull)
{
    AdSession session;
    session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
    session.ad().portraitModeType = VIDEO_AND_WEBVIEW;
    session.ad().portraitVideoPos = TOP;
    session.open();
    session->qoroMoviePlayer.view().setHidden(true);
    session->bHideVideoToShowWebViewInPortraitMode = true;

    session->setVideoVisible();

    EXPECT_FALSE(session->qoroMoviePlayer.view().isHidden());
    EXPECT_TRUE(session->bHideVideoToShowWebViewInPortraitMode);
}

} // namespace
} // namespace qoro
