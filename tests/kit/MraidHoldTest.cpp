#include "tests/support/ScenarioRun.h"

#include <gmock/gmock.h>

// Settings that a page makes through MRAID calls persist, whenever they are made and however often the ad is laid out.

namespace qoro::test
{
namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using Lines = std::vector<std::string>;

constexpr const char* BothArrangements = R"("landscapeModeType": 2, )";
constexpr const char* Opens = R"({"open": 0}, )";
constexpr const char* Plays = R"({"open": 0}, {"at": 1, "player": {"duration": 30, "load": 1}},
                                 {"at": 1, "player": {"time": 0, "state": 1}}, )";

std::string force(const std::string& at, const std::string& orientation)
{
    return R"({"at": )" + at + R"(, "script": ["mraid.setOrientationProperties", {"allowOrientationChange": false, )" +
           R"("forceOrientation": ")" + orientation + R"("}]}, )";
}

/// A value from each snapshot.
Lines in_snapshots(const Lines& trace, const std::string& path)
{
    Lines values;
    for (const std::string& snapshot : of_kind(trace, "snapshot"))
        values.push_back(in_snapshot({snapshot}, path));
    return values;
}

constexpr const char* Landscape = "/fields/bIsVideoOrientationLandscape";

TEST(MraidOrientation, AForcedArrangementHoldsInAnotherDeviceOrientation)
{
    const Lines trace = manual_run(Plays + force("2", "landscape") + R"({"at": 6.9, "snapshot": true},
        {"at": 7.1, "snapshot": true}, {"at": 30, "snapshot": true})",
                                   BothArrangements);

    EXPECT_THAT(in_snapshots(trace, Landscape), ElementsAre("true", "true", "true"));
}

TEST(MraidOrientation, AForcedPortraitHoldsOnADeviceInLandscape)
{
    const Lines trace = manual_run(R"({"device": {"orientation": 3, "statusBarOrientation": 3}}, )" +
                                       (Plays + force("2", "portrait")) + R"({"at": 30, "snapshot": true})",
                                   BothArrangements);

    EXPECT_THAT(in_snapshots(trace, Landscape), ElementsAre("false"));
}

TEST(MraidOrientation, TheAdFollowsTheDeviceThatIsTurned)
{
    const Lines trace = manual_run(Plays + force("2", "landscape") +
                                       R"({"at": 10, "device": {"orientation": 1, "statusBarOrientation": 3}},
        {"at": 11, "device": {"statusBarOrientation": 1}}, {"at": 12, "snapshot": true})",
                                   BothArrangements);

    EXPECT_THAT(in_snapshots(trace, Landscape), ElementsAre("false"));
}

TEST(MraidOrientation, APageThatStopsForcingReleasesTheOrientation)
{
    const Lines trace = manual_run(Plays + force("2", "landscape") + force("10", "none") +
                                       R"({"at": 10, "snapshot": true}, {"at": 20, "snapshot": true})",
                                   BothArrangements);

    EXPECT_THAT(in_snapshots(trace, Landscape), ElementsAre("false", "false"));
}

TEST(MraidOrientation, ThePlayersCommandIsCheckedAsUsual)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["changeOrientation", "landscape"]},
        {"at": 6.9, "snapshot": true}, {"at": 7.1, "snapshot": true})",
                                   BothArrangements);

    EXPECT_THAT(in_snapshots(trace, Landscape), ElementsAre("true", "false"));
}

TEST(MraidOrientation, ClosingReleasesTheOrientation)
{
    // No layout can be requested for an upside-down device; for one in landscape, the other layout can.
    const Lines trace = manual_run(Plays + std::string(R"({"at": 2, "device": {"orientation": 2}}, )") +
                                       force("2", "landscape") + R"({"at": 3, "call": ["checkCanOrientation"]},
        {"at": 3, "call": ["closeAction"]}, {"at": 4, "call": ["checkCanOrientation"]})",
                                   BothArrangements);

    EXPECT_THAT(of_kind(trace, "return"), ElementsAre(HasSubstr(R"("value":true)"), HasSubstr(R"("value":false)")));
}

// -------------------------------------------------------------------------------------------------------- custom close

constexpr const char* CloseParent = "/views/btnClose/parent";

TEST(MraidCustomClose, ItHoldsWheneverItWasRequested)
{
    const std::string early = R"({"at": 0, "script": ["mraid.useCustomClose", true]}, )";
    const std::string late = R"({"at": 2, "script": ["mraid.useCustomClose", true]}, )";
    const std::string play = R"({"at": 1, "player": {"duration": 30, "load": 1}},
        {"at": 1, "player": {"time": 0, "state": 1}}, )";
    const std::string look = R"({"at": 3, "snapshot": true})";

    const Lines before = manual_run(early + Opens + play + look);
    const Lines between = manual_run(Opens + early + play + look);
    const Lines after = manual_run(Opens + play + late + look);

    EXPECT_THAT(in_snapshots(before, CloseParent), ElementsAre("null"));
    EXPECT_THAT(in_snapshots(between, CloseParent), ElementsAre("null"));
    EXPECT_THAT(in_snapshots(after, CloseParent), ElementsAre("null"));
}

TEST(MraidCustomClose, ItHoldsWhenTheAdIsLaidOutAgain)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["mraid.useCustomClose", true]},
        {"at": 3, "device": {"orientation": 3, "statusBarOrientation": 3}}, {"at": 4, "snapshot": true},
        {"at": 5, "device": {"orientation": 1, "statusBarOrientation": 1}}, {"at": 6, "snapshot": true})",
                                   BothArrangements);

    EXPECT_THAT(in_snapshots(trace, CloseParent), ElementsAre("null", "null"));
}

TEST(MraidCustomClose, TheButtonReturnsWhenThePageGivesItBack)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["mraid.useCustomClose", true]},
        {"at": 3, "script": ["mraid.useCustomClose", false]}, {"at": 4, "snapshot": true},
        {"at": 5, "device": {"statusBarOrientation": 3}}, {"at": 6, "snapshot": true})");

    EXPECT_THAT(in_snapshots(trace, CloseParent), ElementsAre(R"("moviePlayerView")", R"("moviePlayerView")"));
}

TEST(MraidCustomClose, ThePlayersCommandReturnsTheButtonToo)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["mraid.useCustomClose", true]},
        {"at": 3, "script": ["MRAIDUseCustomClose", false]}, {"at": 4, "snapshot": true},
        {"at": 5, "device": {"statusBarOrientation": 3}}, {"at": 6, "snapshot": true})");

    EXPECT_THAT(in_snapshots(trace, CloseParent), ElementsAre(R"("moviePlayerView")", R"("moviePlayerView")"));
}

TEST(MraidCustomClose, ThePlayersCommandIsUndoneByTheNextLayoutAsUsual)
{
    const Lines trace = manual_run(std::string(Plays) + R"({"at": 2, "script": ["MRAIDUseCustomClose", true]},
        {"at": 3, "snapshot": true}, {"at": 5, "device": {"statusBarOrientation": 3}}, {"at": 6, "snapshot": true})");

    EXPECT_THAT(in_snapshots(trace, CloseParent), ElementsAre("null", R"("moviePlayerView")"));
}

} // namespace
} // namespace qoro::test
