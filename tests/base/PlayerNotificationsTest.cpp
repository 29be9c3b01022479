#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// ----------------------------------------------------------------------------------------------------------- observers

TEST(PlayVideo, FourPlayerNotificationsAndTheInterruptionAreObserved)
{
    AdSession session;
    const std::size_t before = NSNotificationCenter::defaultCenter().count_of(&session.controller());

    session.open();

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(&session.controller()), before + 5);
}

TEST(PlayVideo, RemovingThePlayersObserversLeavesTheInterruption)
{
    AdSession session;
    const std::size_t before = NSNotificationCenter::defaultCenter().count_of(&session.controller());
    session.open();

    session->removeObserverFromQoroMoviePlayer();

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(&session.controller()), before + 1);
}

TEST(PlayVideo, OfAnotherSenderOnlyThePlaybackStateIsObserved)
{
    const struct {
        std::string_view notification;
        std::vector<std::string> heard;
    } rows[] = {
        {MPMoviePlayerPlaybackDidFinishNotification, {}},
        {MPMoviePlayerLoadStateDidChangeNotification, {}},
        {MPMoviePlayerPlaybackStateDidChangeNotification, {"js video_ended null 0", "log 1 video stop"}},
    };
    for (const auto& row : rows) {
        AdSession session;
        session.open();
        session.player_reports_load(MPMovieLoadStatePlayable);
        // A second load state report would be processed again.
        session->bIsLoaded = false;
        session.forget();

        NSNotificationCenter::defaultCenter().deliver(row.notification, &session);

        EXPECT_EQ(session.transcript(), row.heard) << row.notification;
    }
}

TEST(PlayVideo, TheRegistrationsOfTheVideoBeforeItStay)
{
    AdSession session;
    session.open();
    const std::size_t before = NSNotificationCenter::defaultCenter().count_of(&session.controller());
    session.open();
    session.forget();

    session.plays();
    session.interrupt(1);

    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(&session.controller()), before + 5);
    EXPECT_EQ(session.count_of("js video_loaded null 0"), 1U);
    EXPECT_EQ(session.count_of("js video_play null 0"), 2U);
    EXPECT_THAT(session.lines("player"), ElementsAre("pause", "pause"));
}

// ------------------------------------------------------------------------------------------------------- interruptions

TEST(Interruption, ItsBeginPausesThePlayerAndTakesItsPictureAway)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.interrupt(1);

    EXPECT_THAT(session.transcript(), ElementsAre("player pause"));
    EXPECT_FALSE(session->qoroMoviePlayer.view().superview());
}

TEST(Interruption, ItsEndLaysTheVideoOutAndPlays)
{
    AdSession session;
    session.open();
    session.plays();
    session.interrupt(1);
    session.pauses_at(3);
    session.forget();

    session.interrupt(0);

    EXPECT_THAT(session.events(), Contains(StartsWith("video_orientation")));
    EXPECT_EQ(session.transcript().back(), "player play");
    EXPECT_TRUE(session->qoroMoviePlayer.view().superview());
}

TEST(Interruption, ItsEndWhileTheVideoPlaysPausesIt)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.interrupt(0);

    EXPECT_THAT(session.lines("player"), ElementsAre("pause"));
}

TEST(Interruption, ItsEndDuringAClickThroughPlaysNothing)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(3);
    session->setBDoButtonAction(true);
    session.forget();

    session.interrupt(0);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(Interruption, AnyOtherTypeIsIgnored)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session.interrupt(2);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(Interruption, OfAnotherAudioSessionIsIgnored)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    NSNotificationCenter::defaultCenter().deliver(AVAudioSessionInterruptionNotification, &session,
                                                  {{std::string(AVAudioSessionInterruptionTypeKey), 1}});

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(Interruption, WithoutAPlayerItsBeginDoesNothing)
{
    AdSession session;
    session.ad().strVideoUrl = "";
    session.open();
    session.forget();

    session.interrupt(1);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

} // namespace
} // namespace qoro
