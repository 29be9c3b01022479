#include "tests/support/AdSession.h"
#include "tests/support/Allocations.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

World turned_screen(bool ios8)
{
    World world = AdSession::manual_world();
    world.device.facts.current_screen = CGSize{812, 375};
    world.device.facts.ios8 = ios8;
    return world;
}

/// Opened in landscape on an upright device, its player of a known length.
void open_full_screen(AdSession& session)
{
    session.ad().portraitModeType = VideoAdMode{};
    session.ad().landscapeModeType = ONLY_VIDEO;
    session.open();
    session.player_lasts(30);
}

// ------------------------------------------------------------------------------------------------------------ the tick

TEST(RemainingTimeTick, IsOneSecondWithoutPrePauseLocations)
{
    AdSession session;
    session.open();

    session.plays();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 1.0);
    EXPECT_TRUE(session->timerUpdateRemainderTime.repeats());
}

TEST(RemainingTimeTick, IsATenthWithAListOfThemEvenAnEmptyOne)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = NSArray(std::vector<Value>{});
    session.open();

    session.plays();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 0.1);
}

TEST(RemainingTimeTick, IsChosenAnewWithEachPlay)
{
    AdSession session;
    session.open();
    session.plays();
    session.let_pass(0.5);
    session.script_says("cancelPrePauseLocations");

    session.plays_on();

    EXPECT_EQ(session->timerUpdateRemainderTime.timeInterval(), 0.1);
    EXPECT_EQ(session->timerUpdateRemainderTime.fireDate(), 0.6);
}

TEST(RemainingTimeTick, ReplacesTheOneThatRan)
{
    AdSession session;
    session.open();
    session.plays();
    session.let_pass(0.5);
    session.plays_on();
    session.forget();

    session.let_pass(0.9);
    EXPECT_THAT(session.events(), IsEmpty());
    session.let_pass(0.1);
    EXPECT_EQ(session.events().size(), 1U);
}

TEST(RemainingTimeTick, TellsTheScriptTheWholeSecondsPlayed)
{
    AdSession session;
    session.open();
    session.plays(95.7);
    session.player_is_at(30.2);
    session.forget();

    session.let_pass(1);

    EXPECT_EQ(session.count_of(R"(js video_timeupdate {"e":{"current_time":"30"}} 0)"), 1U);
    EXPECT_EQ(session->labelRemainderTime.text(), "01:05");
}

TEST(RemainingTimeTick, OfAPausedVideoTellsNothingButKeepsTheLabel)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.pauses_at(8);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.events(), IsEmpty());
    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_EQ(session->labelRemainderTime.text(), "00:22");
}

TEST(RemainingTimeTick, AfterTheEndTheLabelShowsNothingLeft)
{
    AdSession session;
    session.open();
    session.plays();
    session.ends();
    session.player_is_at(12);

    session.let_pass(1);

    EXPECT_EQ(session->labelRemainderTime.text(), "00:00");
}

TEST(RemainingTimeTick, BeyondTheTotalTheLabelGoesBelowZero)
{
    AdSession session;
    session.open();
    session.plays();
    session.player_is_at(35);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.text(), "00:-5");
}

TEST(RemainingTimeTick, WithoutADurationNothingIsToldAndTheLabelIsLeftAlone)
{
    AdSession session;
    session.open();
    session.plays(0);
    session->labelRemainderTime.setText("as it was");
    session.forget();

    session->updateRemainderTime();

    EXPECT_THAT(session.transcript(), IsEmpty());
    EXPECT_EQ(session->labelRemainderTime.text(), "as it was");
}

TEST(RemainingTimeTick, TakesTheDurationWhenItIsKnownAtLast)
{
    AdSession session;
    session.open();
    session.plays(0);
    session.player_lasts(29.9);

    session->updateRemainderTime();

    EXPECT_EQ(session->fTotalTime, 29.9F);
}

TEST(RemainingTimeTick, KeepsATotalThatItHas)
{
    AdSession session;
    session.open();
    session.plays(30);
    session.player_lasts(60);

    session->updateRemainderTime();

    EXPECT_EQ(session->fTotalTime, 30);
}

TEST(RemainingTimeTick, KeepsATotalOfLessThanASecond)
{
    AdSession session;
    session.open();
    session.plays(0.5);
    session.player_lasts(60);

    session->updateRemainderTime();

    EXPECT_EQ(session->fTotalTime, 0.5);
    EXPECT_EQ(session->labelRemainderTime.text(), "00:00");
}

TEST(RemainingTimeTick, BackFromAnotherAppTheVideoJumpsToWhereItStood)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(7.5);
    session.return_to_app();
    session.plays_on();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), ElementsAre("seek 7.5"));
    EXPECT_EQ(session->qoroMoviePlayerStatus, QoroMoviePlayerStatusNone);
}

// ----------------------------------------------------------------------------------------------------------- pre-pause

TEST(PrePauseTick, PausesAtALocationThatIsReached)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.player_is_at(4.9);
    session.let_pass(0.1);
    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false"));

    session.player_is_at(5);
    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("create http://ad/v.mp4 false", "pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
}

TEST(PrePauseTick, PassesEveryLocationInOneTick)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5, 10};
    session.open();
    session.plays();
    session.player_is_at(12);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause", "pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
    EXPECT_TRUE(session->prePauseStatusAtLocation(10));
}

TEST(PrePauseTick, PausesAtEachLocationOnce)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.player_is_at(5);
    session.let_pass(0.1);
    session.pauses_at(5);
    session.plays_on();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
}

TEST(PrePauseTick, TellsTheTimeThenJumpsBackThenPauses)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5};
    session.open();
    session.plays();
    session.pauses_at(7.5);
    session.return_to_app();
    session.plays_on();
    session.forget();

    session->updateRemainderTime();

    EXPECT_THAT(session.transcript(),
                ElementsAre(R"(js video_timeupdate {"e":{"current_time":"7"}} 0)", "player seek 7.5", "player pause"));
}

TEST(PrePauseTick, ALocationCountsByItsWholeSeconds)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {5.7};
    session.open();
    session.plays();
    session.player_is_at(5);
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(5));
}

TEST(PrePauseTick, ALocationBeforeTheStartIsReachedAtOnce)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {-3};
    session.open();
    session.plays();
    session.forget();

    session.let_pass(0.1);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
    EXPECT_TRUE(session->prePauseStatusAtLocation(-3));
}

TEST(PrePauseTick, KnowsNoLocationZero)
{
    AdSession session;
    session.ad().arrayPrePauseLocations = {0};
    session.open();
    session.plays();
    session.forget();

    session.let_pass(1);

    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_FALSE(session->prePauseStatusAtLocation(0));
}

// --------------------------------------------------------------------------------------------------- the label's place

TEST(RemainingTimeLabel, StandsInTheLowerLeftCornerOfTheBand)
{
    AdSession session;
    session.open();
    session.player_lasts(30);

    session->updateRemainderTime();

    // "00:30" measures 35 by 16.
    EXPECT_EQ(session->labelRemainderTime.frame(), (CGRect{10, 184.4375, 35, 16}));
}

TEST(RemainingTimeLabel, IsAsLargeAsItsTextAndNoWiderThan296Points)
{
    World world = AdSession::manual_world();
    world.text["00:30"] = {400, 20};
    AdSession session(world);
    session.open();
    session.player_lasts(30);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame(), (CGRect{10, 180.4375, 296, 20}));
}

TEST(RemainingTimeLabel, StandsOnAnEdgeOfSinglePrecision)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->qoroMoviePlayer.view().setFrame({0, 0, 375, 210.1});

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, static_cast<double>(210.1F) - 16 - 10.5);
}

TEST(RemainingTimeLabel, InFullScreenInAHostLockedOtherwiseOnAnUprightDeviceStandsOnTheScreensWidth)
{
    AdSession session;
    open_full_screen(session);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, TheLandscapeLocksSideCountsForNothingWithoutTheLock)
{
    AdSession session(turned_screen(false));
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, OfABandInALockedHostStandsOnTheBandsLowerEdge)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session.rotate(UIDeviceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 184.4375);
}

TEST(RemainingTimeLabel, StandsOnTopOfTheVideo)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->updateRemainderTime();
    session->qoroMoviePlayer.view().addSubview(session->btnMute);

    session->updateRemainderTime();

    EXPECT_TRUE(session->labelRemainderTime.superview() == session->qoroMoviePlayer.view());
    EXPECT_TRUE(is_on_top(session->labelRemainderTime));
}

TEST(RemainingTimeLabel, LeavesTheScreenWithThePlayer)
{
    AdSession session;
    session.open();
    session.player_lasts(30);
    session->updateRemainderTime();
    session->setQoroMoviePlayer(nullptr);

    session->updateRemainderTime();

    EXPECT_FALSE(session->labelRemainderTime.superview());
}

TEST(RemainingTimeLabel, InFullScreenStandsOnTheScreensLowerEdge)
{
    AdSession session;
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeLeft);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InFullScreenOnAnUprightDeviceStandsOnTheScreensWidth)
{
    AdSession session;
    open_full_screen(session);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InAHostLockedToLandscapeStandsOnTheScreensHeight)
{
    AdSession session(turned_screen(true));
    open_full_screen(session);
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, InAHostLockedToLandscapeBeforeIOS8StandsOnTheScreensWidth)
{
    AdSession session(turned_screen(false));
    open_full_screen(session);
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 785.5);
}

TEST(RemainingTimeLabel, InALockedHostOnALandscapeDeviceStandsOnTheScreensWidth)
{
    AdSession session(turned_screen(true));
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 785.5);
}

TEST(RemainingTimeLabel, InALockedHostOnALandscapeDeviceBeforeIOS8StandsOnTheScreensHeight)
{
    AdSession session(turned_screen(false));
    open_full_screen(session);
    session.rotate(UIDeviceOrientationLandscapeRight);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoStandsOnTheVideosLowerEdge)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 707.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoInAHostLockedOtherwiseStandsOnTheVideosLowerEdge)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);
    session->bIsLockOneSide = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 707.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoWithTheLandscapeSideButNoLockStandsOnTheVideosLowerEdge)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 707.5);
}

TEST(RemainingTimeLabel, OfAFullPortraitVideoInAHostLockedToLandscapeStandsOnTheVideosWidth)
{
    AdSession session;
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.player_lasts(30);
    session->bIsLockOneSide = true;
    session->bIsLockOneSideAndIsLandscape = true;

    session->updateRemainderTime();

    EXPECT_EQ(session->labelRemainderTime.frame().y, 348.5);
}

// -------------------------------------------------------------------------------------------------------------- timers

TEST(StopUpdateTimer, StopsThePlayersTimersAfterTheSuperclassOnes)
{
    AdSession session;
    session.open();
    session.plays();
    session->checkDeviceOrientation();
    session.forget();

    session->stopUpdateTimer();
    session.let_pass(30);

    EXPECT_THAT(session.transcript(), ElementsAre("super stopUpdateTimer"));
    EXPECT_FALSE(session->timerCheckDeviceOrientation);
    EXPECT_FALSE(session->timerUpdateRemainderTime);
    EXPECT_FALSE(session->timerCloseBtnCountdown);
    EXPECT_FALSE(session->timerSendTrackingToServer);
    EXPECT_FALSE(session->timerSetControllerButtonHide);
}

/// A timer's target, whose end tells that the timer was stopped: nothing else holds it.
struct StoppedTimer : Object {
    StoppedTimer(std::vector<std::string>& into, const char* timer) : stopped(into), name(timer) {}
    ~StoppedTimer() override { stopped.emplace_back(name); }

    std::vector<std::string>& stopped;
    const char* name;
};

TEST(StopUpdateTimer, StopsSixTimersInTheirOrderAndForgetsThem)
{
    using Ad = QoroVideoWebViewController;
    constexpr std::pair<const char*, NSTimer Ad::*> timers[] = {
        {"timerCheckDeviceOrientation", &Ad::timerCheckDeviceOrientation},
        {"timerUpdateRemainderTime", &Ad::timerUpdateRemainderTime},
        {"timerCloseBtnCountdown", &Ad::timerCloseBtnCountdown},
        {"timerCheckVideoPlay", &Ad::timerCheckVideoPlay},
        {"timerSendTrackingToServer", &Ad::timerSendTrackingToServer},
        {"timerSetControllerButtonHide", &Ad::timerSetControllerButtonHide},
    };
    AdSession session;
    std::vector<std::string> stopped;
    std::vector<std::string> expected;
    for (const auto& [name, timer] : timers) {
        const auto target = std::make_shared<StoppedTimer>(stopped, name);
        const Action nothing(target.get(), name, [](Object&, const Cause&) {});
        session.controller().*timer = NSTimer::scheduledTimerWithTimeInterval(1, nothing, true);
        expected.emplace_back(name);
    }

    session->stopUpdateTimer();

    EXPECT_EQ(stopped, expected);
    for (const auto& [name, timer] : timers)
        EXPECT_FALSE(session.controller().*timer) << name;
}

TEST(StopUpdateTimer, LeavesTheBufferingAndLoadedTimersRunning)
{
    AdSession session;
    session.ad().iBufferingSufferTime = 5;
    session.open();

    session->stopUpdateTimer();

    EXPECT_TRUE(session->timerBufferSufferTime.isValid());
    EXPECT_TRUE(session->timerVideoLoaded.isValid());
}

// ------------------------------------------------------------------------------------------------------- button titles

TEST(ButtonTitle, IsDecodedAndStyled)
{
    AdSession session;
    const UIButton button = UIButton::create();
    button.titleLabel().setFont({"Times", 1.0});
    button.titleLabel().setNumberOfLines(3);

    session->setButtonText(button, "Buy+now%21%20");

    EXPECT_EQ(button.title(), "Buy now!");
    EXPECT_EQ(button.titleLabel().font(), (UIFont{"Arial", 17.0}));
    EXPECT_EQ(button.titleLabel().textColor(), UIColor::whiteColor());
    EXPECT_EQ(button.titleLabel().lineBreakMode(), NSLineBreakByCharWrapping);
    EXPECT_EQ(button.titleLabel().textAlignment(), NSTextAlignmentRight);
    const ViewNode& label = *button.node()->title_label;
    EXPECT_EQ(label.number_of_lines, 1);
    EXPECT_TRUE(label.highlighted);
    EXPECT_EQ(label.text_shadow_offset, (CGSize{0.5, 0.5}));
    EXPECT_EQ(button.node()->title_shadow_color, UIColor::colorWithRed(0, 0, 0, 0.3));
    EXPECT_TRUE(button.node()->shows_touch);
}

TEST(Tick, ThatChangesNothingVisibleAsksForNoMemory)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(3.2);
    session->updateRemainderTime();
    const std::size_t before = test::allocations_so_far();

    session->updateRemainderTime();

    EXPECT_EQ(test::allocations_so_far(), before);
}

TEST(RemainingTimeLabel, InALockedHostOnADeviceUpsideDownItStandsOnTheScreensHeight)
{
    AdSession session;
    session.open();
    session.plays();
    session.rotate(UIDeviceOrientationPortraitUpsideDown);
    session->bIsLockOneSide = true;
    session->bIsFullScreen = true;
    session->bIsLockOneSideAndIsLandscape = false;

    session->updateRemainderTime();

    const CGRect label = session->labelRemainderTime.frame();
    EXPECT_EQ(label.y + label.height, session->getCurrnetScreenSize().height - 10.5);
}

} // namespace
} // namespace qoro
