#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// The data that a new listener of an event receives immediately, in a range of video states; nothing in other states.
struct LateEvent {
    const char* name;
    std::uint32_t from;
    std::uint32_t to;
    const char* event;
};

/// One past the last state.
constexpr std::uint32_t Never = VideoEnded + 1;

constexpr LateEvent LateListeners[] = {
    {"video_loading", VideoLoading, VideoLoading, "video_loading"},
    {"video_loaded", VideoLoaded, VideoLoaded, "video_loaded"},
    {"video_play", VideoPlay, VideoEnded, "video_play"},
    {"video_volumechange", VideoPlay, VideoEnded, R"(video_volumechange {"e":{"volume":"1"}})"},
    {"video_orientation", VideoPlay, VideoEnded, R"(video_orientation {"e":{"orientation":"portrait"}})"},
    {"video_visibilitychange", VideoLoading, VideoEnded, R"(video_visibilitychange {"e":{"visibility":1}})"},
    {"video_pause", Never, VideoEnded, ""},
    {"video_ended", Never, VideoEnded, ""},
    {"video_timeupdate", Never, VideoEnded, ""},
    {"onhide", Never, VideoEnded, ""},
};

TEST(AddEventListener, ALateListenerReceivesTheEventForTheVideosCurrentState)
{
    for (const LateEvent& row : LateListeners) {
        for (std::uint32_t state = VideoLoading; state <= VideoEnded; ++state) {
            AdSession session;
            session.open();
            session->videoState = static_cast<VideoState>(state);
            session.forget();

            session->addEventListener(row.name, "1", "1");

            std::vector<std::string> expected;
            if (row.from <= state && state <= row.to)
                expected.emplace_back(row.event);
            EXPECT_EQ(session.events(), expected) << row.name << " in state " << state;
        }
    }
}

TEST(AddEventListener, ALateListenerOfLoadingReceivesTheEventAgain)
{
    AdSession session;
    session.open();
    session.forget();

    session->addEventListener("video_loading", "1", "1");

    EXPECT_THAT(session.transcript(), ElementsAre("js video_loading null 1"));
}

TEST(AddEventListener, AListenerOfLoadingReceivesNothingOnceTheVideoHasLoaded)
{
    AdSession session;
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);
    session.forget();

    session->addEventListener("video_loading", "1", "1");

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(AddEventListener, AListenerOfLoadedReceivesNothingWhileTheVideoLoads)
{
    AdSession session;
    session.open();
    session.forget();

    session->addEventListener("video_loaded", "1", "1");

    EXPECT_THAT(session.events(), IsEmpty());
    EXPECT_EQ(session->videoState, VideoLoading);
}

TEST(AddEventListener, AListenerOfLoadedReceivesNothingASecondTime)
{
    AdSession session;
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);
    session.forget();

    session->addEventListener("video_loaded", "1", "1");

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(AddEventListener, AListenerOfPlayWhileThePlayerIsPausedSetsTheStateBackToPlay)
{
    AdSession session;
    session.open();
    session.plays();
    session.pauses_at(3);
    session.forget();

    session->addEventListener("video_play", "1", "1");

    EXPECT_THAT(session.events(), ElementsAre("video_play"));
    EXPECT_EQ(session->videoState, VideoPlay);
}

TEST(AddEventListener, AListenerOfPlayAfterTheEndSetsTheStateBackToPlay)
{
    AdSession session;
    session.open();
    session.plays();
    session.ends();
    session.forget();

    session->addEventListener("video_play", "1", "1");

    EXPECT_THAT(session.events(), ElementsAre("video_play"));
    EXPECT_EQ(session->videoState, VideoPlay);
    EXPECT_TRUE(session->bIsPlayFinish);
}

TEST(AddEventListener, AListenerOfPlayBeforeAnyPlayReceivesNothing)
{
    AdSession session;
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);
    session.forget();

    session->addEventListener("video_play", "1", "1");

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(AddEventListener, AListenerOfTheVolumeReceivesItOnceTheVideoHasPlayed)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session->addEventListener("video_volumechange", "1", "1");

    EXPECT_THAT(session.events(), ElementsAre(R"(video_volumechange {"e":{"volume":"1"}})"));
}

TEST(AddEventListener, AListenerOfTheVolumeReceivesNothingBeforeTheFirstPlay)
{
    AdSession session;
    session.open();
    session.forget();

    session->addEventListener("video_volumechange", "1", "1");

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(AddEventListener, AListenerOfTheOrientationReceivesItOnceTheVideoHasPlayed)
{
    AdSession session;
    session.open();
    session.plays();
    session.forget();

    session->addEventListener("video_orientation", "1", "1");

    EXPECT_THAT(session.events(), ElementsAre(R"(video_orientation {"e":{"orientation":"portrait"}})"));
}

TEST(AddEventListener, AListenerOfTheOrientationReceivesNothingBeforeTheFirstPlay)
{
    AdSession session;
    session.open();
    session.forget();

    session->addEventListener("video_orientation", "1", "1");

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(AddEventListener, AListenerOfTheVisibilityReceivesItInAnyState)
{
    AdSession session;
    session.forget();

    session->addEventListener("video_visibilitychange", "1", "1");

    EXPECT_THAT(session.transcript(), ElementsAre(R"(js video_visibilitychange {"e":{"visibility":1}} 1)"));
}

TEST(AddEventListener, TheScriptCanTakeTheCloseButtonsTaps)
{
    AdSession session;
    session.open();
    session.forget();

    session->addEventListener("onclick_closebtn", "1", "1");
    session.tap(session->btnClose);

    EXPECT_TRUE(session->bIsClickCloseButton);
    EXPECT_THAT(session.transcript(), ElementsAre("js onclick_closebtn null 1"));
}

TEST(RemoveEventListener, TheCloseButtonGetsItsOwnActionBack)
{
    AdSession session;
    session.open();
    session->addEventListener("onclick_closebtn", "1", "1");

    session->removeEventListener("onclick_closebtn", "1");
    session.tap(session->btnClose);

    EXPECT_FALSE(session->bIsClickCloseButton);
    EXPECT_FALSE(session->btnClose);
}

TEST(RemoveEventListener, TheCloseButtonGetsItsActionBackEvenWhenAnotherListenerIsLeft)
{
    AdSession session;
    session.open();
    session->addEventListener("onclick_closebtn", "1", "1");

    EXPECT_EQ(session->removeEventListener("onclick_closebtn", "2"), 0);

    EXPECT_FALSE(session->bIsClickCloseButton);
    ASSERT_EQ(session->btnClose.targets().size(), 1U);
    EXPECT_EQ(session->btnClose.targets()[0].name(), "closeAction");
}

TEST(RemoveEventListener, RemovingAnotherEventsListenerLeavesTheTapsToTheScript)
{
    AdSession session;
    session.open();
    session->addEventListener("onclick_closebtn", "1", "1");
    session->addEventListener("video_play", "1", "1");

    session->removeEventListener("video_play", "1");

    EXPECT_TRUE(session->bIsClickCloseButton);
    EXPECT_EQ(session->btnClose.targets()[0].name(), "onclick_closebtn");
}

TEST(RemoveEventListener, ReturnsTheSuperclassesResult)
{
    AdSession session;
    session->addEventListener("video_play", "1", "1");

    EXPECT_EQ(session->removeEventListener("video_play", "1"), 1);
    EXPECT_EQ(session->removeEventListener("video_play", "1"), 0);
    EXPECT_EQ(session->removeEventListener("onclick_closebtn", "1"), 0);
}

TEST(SendEventToJS, AResultIsWrapped)
{
    AdSession session;
    session.forget();

    session->sendEventToJS("anything", {{"a", 1}});

    EXPECT_THAT(session.events(), ElementsAre(R"(anything {"e":{"a":1}})"));
}

TEST(SendEventToJS, NoResultIsNull)
{
    AdSession session;
    session.forget();

    session->sendEventToJS("anything", nullptr);

    EXPECT_THAT(session.transcript(), ElementsAre("js anything null 0"));
}

TEST(SendEventToJS, AnEmptyResultIsWrappedToo)
{
    AdSession session;
    session.forget();

    session->sendEventToJS("anything", NSDictionary::dictionary());

    EXPECT_THAT(session.events(), ElementsAre(R"(anything {"e":{}})"));
}

TEST(SendEventToJS, TheWrapperIsEmptiedAfterTheCall)
{
    struct KeepingAd : QoroVideoWebViewController {
        void listenerCallbackToJS(const NSString&, const NSDictionary& withData) override
        {
            data = withData;
            during = as_text(withData);
        }
        NSDictionary data;
        std::string during;
    };
    AdSession session;
    const auto controller = std::make_shared<KeepingAd>();
    controller->init();

    controller->sendEventToJS("anything", {{"a", 1}});

    EXPECT_EQ(controller->during, R"({"e":{"a":1}})");
    EXPECT_TRUE(controller->data);
    EXPECT_EQ(controller->data.count(), 0U);
}

TEST(SendEventToJS, OneLayoutPassSendsTheOrientationTwiceBareThenWrapped)
{
    AdSession session;
    session.open();
    session.forget();

    session->setPortraitModeScreen();

    EXPECT_THAT(session.events(), ElementsAre(R"(video_orientation {"orientation":"portrait"})",
                                              R"(video_visibilitychange {"e":{"visibility":1}})",
                                              R"(video_orientation {"e":{"orientation":"portrait"}})"));
}

TEST(SendEventToJS, ALandscapePassSendsTheOrientationTwiceBareThenWrapped)
{
    AdSession session;
    session.open();
    session.forget();

    session->setLandscapeFullScreenVideo();

    EXPECT_THAT(session.events(), ElementsAre(R"(video_orientation {"orientation":"landscape"})",
                                              R"(video_orientation {"e":{"orientation":"landscape"}})"));
}

TEST(SendVideoVisibilityEvent, AVideoHiddenInPortraitIsNotVisible)
{
    AdSession session;
    session->bHideVideoToShowWebViewInPortraitMode = true;
    session.forget();

    session->sendVideoVisibilityEvent();

    EXPECT_THAT(session.events(), ElementsAre(R"(video_visibilitychange {"e":{"visibility":0}})"));
}

TEST(SendVideoVisibilityEvent, AVideoHiddenInLandscapeIsNotVisible)
{
    AdSession session;
    session->bHideVideoToShowWebViewInLandscapeMode = true;
    session.forget();

    session->sendVideoVisibilityEvent();

    EXPECT_THAT(session.events(), ElementsAre(R"(video_visibilitychange {"e":{"visibility":0}})"));
}

TEST(SendOrientationEvent, FollowsTheVideosOrientation)
{
    AdSession session;
    session->bIsVideoOrientationLandscape = true;
    session.forget();

    session->sendOrientationEvent();

    EXPECT_THAT(session.events(), ElementsAre(R"(video_orientation {"e":{"orientation":"landscape"}})"));
}

} // namespace
} // namespace qoro
