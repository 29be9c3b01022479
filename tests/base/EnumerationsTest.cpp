#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

/// An enumerator with the value that the ad server, the kit and traces use.
struct Known {
    const char* name;
    std::int64_t value;
    std::int64_t number;
};

constexpr Known Enumerators[] = {
    {"TOP", TOP, 1},
    {"BOTTOM", BOTTOM, 2},
    {"RIGHT", RIGHT, 3},
    {"LEFT", LEFT, 4},
    {"MIDDLE", MIDDLE, 5},
    {"FULL", FULL, 6},
    {"ONLY_VIDEO", ONLY_VIDEO, 1},
    {"VIDEO_AND_WEBVIEW", VIDEO_AND_WEBVIEW, 2},
    {"VIDEO", VIDEO, 1},
    {"VIDEO_BANNER", VIDEO_BANNER, 2},
    {"VIDEO_EX", VIDEO_EX, 3},
    {"SMALL", SMALL, 1},
    {"BIG", BIG, 2},
    {"ButtonPositionMode_OneButton", ButtonPositionMode_OneButton, 1},
    {"ButtonPositionMode_TwoButton", ButtonPositionMode_TwoButton, 2},
    {"VideoLoading", VideoLoading, 0},
    {"VideoLoaded", VideoLoaded, 1},
    {"VideoPlay", VideoPlay, 2},
    {"VideoPause", VideoPause, 3},
    {"VideoEnded", VideoEnded, 4},
    {"QoroMoviePlayerStatusNone", QoroMoviePlayerStatusNone, 0},
    {"QoroMoviePlayerStatusResuming", QoroMoviePlayerStatusResuming, 1},
    {"QoroMoviePlayerStatusPlaying", QoroMoviePlayerStatusPlaying, 2},
    {"QoroMoviePlayerStatusSeeking", QoroMoviePlayerStatusSeeking, 3},
    {"QoroMoviePlayerStatusFinishedVideo", QoroMoviePlayerStatusFinishedVideo, 4},
    {"QoroMoviePlayerStatusTerminating", QoroMoviePlayerStatusTerminating, 5},
    {"CallShowFunc", CallShowFunc, 0},
    {"JsSide", JsSide, 1},
    {"PageFinished", PageFinished, 2},
    {"UNKNOWN", UNKNOWN, 0},
    {"BANNER_AD", BANNER_AD, 1},
    {"INTERSTITIAL_AD", INTERSTITIAL_AD, 2},
    {"IN_APP_WEBVIEW", IN_APP_WEBVIEW, 3},
    {"VIDEO_AD", VIDEO_AD, 4},
    {"NATIVE_AD", NATIVE_AD, 5},
    {"SPLASH_AD", SPLASH_AD, 6},
    {"ZulixLogTagOfDebug", ZulixLogTagOfDebug, 0},
    {"ZulixLogTagOfInfo", ZulixLogTagOfInfo, 1},
    {"ZulixLogTagOfWarnning", ZulixLogTagOfWarnning, 2},
    {"ZulixLogTagOfError", ZulixLogTagOfError, 3},
    {"ZulixLogTagOfNote", ZulixLogTagOfNote, 4},
};

TEST(Enumerations, HaveTheirDocumentedNumbers)
{
    for (const Known& enumerator : Enumerators)
        EXPECT_EQ(enumerator.value, enumerator.number) << enumerator.name;
}

TEST(Enumerations, AreOfThirtyTwoBitsExceptThePlayersStatus)
{
    for (const std::size_t size : {sizeof(ViewPosition), sizeof(VideoAdMode), sizeof(VideoAdType),
                                   sizeof(CloseButtonSize), sizeof(ButtonPositionMode), sizeof(VideoState),
                                   sizeof(SendImpPolicy), sizeof(AdUnitType), sizeof(ZulixLogTag)})
        EXPECT_EQ(size, 4U);
    EXPECT_EQ(sizeof(QoroMoviePlayerStatus), 8U);
}

} // namespace
} // namespace qoro
