#include "platform/MediaPlayer.h"
#include "tests/support/RecordingPlatform.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

using namespace qoro;
using qoro::test::RecordingPlatform;

namespace
{

using Lines = std::vector<std::string>;

struct Viewer : Object {
    void hear(const NSNotification& notification)
    {
        heard.push_back(std::string(notification.name));
        object = notification.object;
        reason = notification.userInfo[MPMoviePlayerPlaybackDidFinishReasonUserInfoKey].intValue();
    }
    void drop(const NSNotification& notification)
    {
        heard.push_back(std::string(notification.name));
        player = nullptr;
    }

    template <auto member>
    void listen_for(std::string_view name, const void* of = nullptr)
    {
        NSNotificationCenter::defaultCenter().addObserver(action<member>(this, "hear:"), name, of);
    }

    Lines heard;
    const void* object = nullptr;
    int reason = -1;
    MPMoviePlayerViewController player;
};

struct MoviePlayer : testing::Test {
    void open()
    {
        viewer->player = MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/v.mp4"));
        platform.transcript.clear();
    }
    MPMoviePlayerController player() { return viewer->player.moviePlayer(); }

    RecordingPlatform platform;
    std::shared_ptr<Viewer> viewer = std::make_shared<Viewer>();
};

} // namespace

TEST_F(MoviePlayer, IsMadeForAnAddressOrAFile)
{
    MPMoviePlayerViewController::initWithContentURL(NSURL::URLWithString("http://ad/v.mp4"));
    MPMoviePlayerViewController::initWithContentURL(NSURL::fileURLWithPath("/cache/v.mp4"));
    MPMoviePlayerViewController::initWithContentURL(nullptr);

    EXPECT_EQ(platform.transcript,
              (Lines{"player do=create url=http://ad/v.mp4 file=false", "player do=create url=/cache/v.mp4 file=true",
                     "player do=create url=null file=false"}));
}

TEST_F(MoviePlayer, SharesItsViewWithItsViewController)
{
    open();

    EXPECT_TRUE(player().view());
    EXPECT_EQ(player().view(), viewer->player.view());
    EXPECT_EQ(player().view().node()->kind, ViewNode::Kind::Video);
    EXPECT_EQ(player().view().node()->player, player().engine());
}

TEST_F(MoviePlayer, CarriesOutCommandsAndReportsThem)
{
    open();

    player().play();
    player().setCurrentPlaybackTime(12.5);
    player().pause();

    EXPECT_EQ(platform.transcript, (Lines{"player do=play", "player do=seek to=12.5", "player do=pause"}));
    EXPECT_EQ(platform.player->plays, 1);
    EXPECT_EQ(platform.player->pauses, 1);
    EXPECT_EQ(player().currentPlaybackTime(), 12.5);
}

TEST_F(MoviePlayer, ReadsItsEngine)
{
    open();
    platform.player->length = 30;
    platform.player->load = 3;
    platform.player->state = 1;

    EXPECT_EQ(player().duration(), 30);
    EXPECT_EQ(player().loadState(), 3);
    EXPECT_EQ(player().playbackState(), 1);
    EXPECT_EQ(player().contentURL().absoluteString(), "http://ad/v.mp4");
}

TEST_F(MoviePlayer, HasItsDefaultSettings)
{
    open();

    EXPECT_TRUE(player().settings().should_autoplay);
    EXPECT_EQ(player().settings().scaling_mode, 1);
    EXPECT_FALSE(player().settings().fullscreen);
    EXPECT_EQ(player().settings().control_style, 1);
    EXPECT_EQ(player().settings().repeat_mode, 0);
    EXPECT_EQ(player().settings().source_type, 0);
}

TEST_F(MoviePlayer, PassesOnASettingThatChanges)
{
    open();

    player().setScalingMode(MPMovieScalingModeFill);
    player().setScalingMode(MPMovieScalingModeFill);
    player().setShouldAutoplay(false);
    player().setFullscreen(true);
    player().setControlStyle(MPMovieControlStyleNone);
    player().setRepeatMode(MPMovieRepeatModeOne);
    player().setMovieSourceType(MPMovieSourceTypeFile);

    ASSERT_EQ(platform.player->applied.size(), 6U);
    EXPECT_EQ(platform.player->applied.front().scaling_mode, 3);
    EXPECT_FALSE(platform.player->applied.back().should_autoplay);
    EXPECT_EQ(platform.player->applied.back().source_type, 1);
    EXPECT_EQ(player().view().node()->scaling_mode, 3);
    EXPECT_EQ(platform.transcript, Lines{});
}

TEST_F(MoviePlayer, DoesNotReachTheObserversOfADestroyedPlayer)
{
    open();
    viewer->listen_for<&Viewer::hear>("MPMoviePlayerLoadStateDidChangeNotification", player().identity());
    viewer->player = nullptr;

    open(); // may reuse the first player's memory address
    platform.player->listener.load_state_changed();

    EXPECT_EQ(viewer->heard, Lines{});
}

TEST_F(MoviePlayer, PostsItsNotificationsInItsOwnName)
{
    open();
    const void* identity = player().identity();
    viewer->listen_for<&Viewer::hear>("MPMoviePlayerLoadStateDidChangeNotification", identity);
    viewer->listen_for<&Viewer::hear>("MPMoviePlayerPlaybackStateDidChangeNotification", identity);
    viewer->listen_for<&Viewer::hear>("MPMoviePlayerPlaybackDidFinishNotification", identity);

    platform.player->listener.load_state_changed();
    platform.player->listener.playback_state_changed();
    platform.player->listener.finished(MPMovieFinishReasonPlaybackError);

    EXPECT_EQ(viewer->heard,
              (Lines{"MPMoviePlayerLoadStateDidChangeNotification", "MPMoviePlayerPlaybackStateDidChangeNotification",
                     "MPMoviePlayerPlaybackDidFinishNotification"}));
    EXPECT_EQ(viewer->object, identity);
    EXPECT_EQ(viewer->reason, 1);
    EXPECT_EQ(platform.transcript, Lines{});
}

TEST_F(MoviePlayer, EndsWithItsLastHandle)
{
    open();
    const UIView view = player().view();

    viewer->player = nullptr;

    EXPECT_EQ(platform.players_gone, 1);
    EXPECT_EQ(view.node()->player, nullptr);
}

TEST_F(MoviePlayer, DestroyedByAnObserverEndsAfterItsReport)
{
    open();
    viewer->listen_for<&Viewer::drop>("MPMoviePlayerPlaybackDidFinishNotification");
    viewer->listen_for<&Viewer::hear>("MPMoviePlayerPlaybackStateDidChangeNotification");
    PlayerListener& reports = platform.player->listener;

    reports.finished(MPMovieFinishReasonPlaybackEnded);
    EXPECT_EQ(platform.players_gone, 0);
    reports.playback_state_changed();
    platform.let_pass(0);

    EXPECT_EQ(platform.players_gone, 1);
    EXPECT_EQ(viewer->heard, Lines{"MPMoviePlayerPlaybackDidFinishNotification"});
}

TEST_F(MoviePlayer, ReportsOnThePlatformThatItWasMadeOn)
{
    open();
    viewer->listen_for<&Viewer::hear>("MPMoviePlayerLoadStateDidChangeNotification");
    const RecordingPlatform other;

    platform.player->listener.load_state_changed();

    EXPECT_EQ(viewer->heard, Lines{"MPMoviePlayerLoadStateDidChangeNotification"});
}

TEST_F(MoviePlayer, ThatIsNullDoesNothingAndReadsZero)
{
    const MPMoviePlayerController none;

    none.play();
    none.pause();
    none.setCurrentPlaybackTime(5);
    none.setFullscreen(true);
    none.setScalingMode(MPMovieScalingModeAspectFill);

    EXPECT_EQ(none.duration(), 0);
    EXPECT_EQ(none.currentPlaybackTime(), 0);
    EXPECT_EQ(none.loadState(), 0);
    EXPECT_EQ(none.playbackState(), 0);
    EXPECT_FALSE(none.view());
    EXPECT_FALSE(none.contentURL());
    EXPECT_EQ(none.engine(), nullptr);
    EXPECT_EQ(none.identity(), nullptr);
    EXPECT_FALSE(none.settings().should_autoplay);
    EXPECT_EQ(platform.transcript, Lines{});
}

TEST(TheMusicPlayer, IsMadeOnFirstUse)
{
    EXPECT_FALSE(MPMusicPlayerController());
    EXPECT_TRUE(MPMusicPlayerController::applicationMusicPlayer());
}
