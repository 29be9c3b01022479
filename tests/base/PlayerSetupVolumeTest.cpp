#include "tests/support/AdSession.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

World world_with_volume(float volume)
{
    World world = AdSession::manual_world();
    world.device.output_volume = volume;
    return world;
}

void load(AdSession& session)
{
    session.open();
    session.player_reports_load(MPMovieLoadStatePlayable);
}

TEST(PlayVideo, TheVolumesSliderIsFoundAndItsVolumeRemembered)
{
    AdSession session(world_with_volume(0.25F));

    session.open();

    EXPECT_TRUE(session->volumeSlider);
    EXPECT_TRUE(session->musicPlayer);
    EXPECT_EQ(session->fDefaultVolume, 0.25F);
}

TEST(PlayVideo, TheVolumeViewIsFortyPointsNarrowerThanTheView)
{
    AdSession session;

    session.open();

    EXPECT_EQ(session->volumeSlider.superview().superview(), session->view());
    EXPECT_EQ(session->volumeSlider.superview().frame(), (CGRect{20, 100, 335, 50}));
}

TEST(PlayVideo, WithoutASliderTheFieldStaysAsItWas)
{
    World world = AdSession::manual_world();
    world.device.volume_slider = false;
    AdSession session(world);
    const UISlider before(std::make_shared<ViewNode>(ViewNode::Kind::Slider));
    session->volumeSlider = before;

    session.open();

    EXPECT_EQ(session->volumeSlider, before);
    EXPECT_TRUE(session->musicPlayer);
}

TEST(PlayVideo, TheVolumeViewShowsNothing)
{
    AdSession session;

    session.open();

    EXPECT_FALSE(session->volumeSlider.superview().node()->shows_volume_slider);
    EXPECT_FALSE(session->volumeSlider.superview().node()->shows_route_button);
}

TEST(PlayVideo, AnAdThatStartsMutedIsMutedOnceLoaded)
{
    AdSession session;
    session.ad().bIsDefaultMute = true;
    session.ad().arrayMuteTrackingUrls = NSArray::of_strings({"http://t/mute"});

    load(session);

    EXPECT_TRUE(session->bIsMute);
    EXPECT_THAT(session.lines("volume"), ElementsAre("0"));
    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(PlayVideo, AnAdThatStartsWithSoundIsAtTheStartsVolumeOnceLoaded)
{
    AdSession session;
    session.ad().arrayUnmuteTrackingUrls = NSArray::of_strings({"http://t/unmute"});

    load(session);

    EXPECT_FALSE(session->bIsMute);
    EXPECT_THAT(session.lines("volume"), ElementsAre("0.6"));
    EXPECT_THAT(session.fetched(), IsEmpty());
}

TEST(PlayVideo, OnlyAnAdThatStartsMutedTouchesTheMuteFlag)
{
    const struct {
        bool before, starts_muted;
        bool afterwards;
    } rows[] = {
        {true, true, false},
        {true, false, true},
        {false, true, false},
        // The second video of a session: its first toggle mutes.
        {false, false, false},
    };
    for (const auto& row : rows) {
        AdSession session;
        session->bIsMute = row.before;
        session.ad().bIsDefaultMute = row.starts_muted;
        session.open();
        EXPECT_EQ(session->bIsMute, row.afterwards) << row.before << ' ' << row.starts_muted;
    }
}

TEST(PlayVideo, AnAdWithSoundOnASilentDeviceIsAtHalfVolumeOnceLoaded)
{
    AdSession session(world_with_volume(0));

    load(session);

    EXPECT_THAT(session.lines("volume"), ElementsAre("0.5"));
}

} // namespace
} // namespace qoro
