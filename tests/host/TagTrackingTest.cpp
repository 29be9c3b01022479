#include "tests/support/TagRun.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

// Trackers of an ad whose video lasts ten seconds and plays from 0.3 s on, by VAST 4.3, sections 3.10 and 3.14.

namespace qoro::test
{
namespace
{

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Texts = std::vector<std::string>;

constexpr const char* Viewable = "<ViewableImpression><Viewable>http://t/viewable</Viewable>"
                                 "<NotViewable>http://t/notViewable</NotViewable>"
                                 "<ViewUndetermined>http://t/viewUndetermined</ViewUndetermined></ViewableImpression>";
constexpr const char* Error = "<Error>http://t/error?[ERRORCODE]</Error>";
const json Picture{{"body64", "iVBORw0KGgo="}};

/// An ad with a tracker for every event.
TagAd complete_ad()
{
    return {.in_line = std::string(Viewable) + Error, .events = all_events()};
}

std::string tap(const std::string& at, const std::string& button)
{
    return R"({"at": )" + at + R"(, "tap": ")" + button + R"("})";
}

// ----------------------------------------------------------------------------------------------------------
// undisturbed

TEST(TagTracking, AnUndisturbedAdSendsItsEventsOnceAtTheirPositions)
{
    EXPECT_THAT(timed_trackers(trace_of(complete_ad())),
                ElementsAre("loaded 0.3", "impression 0.3", "creativeView 0.3", "start 0.3", "viewable 2.3",
                            "firstQuartile 2.8", "midpoint 5.3", "thirdQuartile 7.8", "complete 10.3"));
}

TEST(TagTracking, ProgressIsSentAtItsTimeOrItsPartOfTheVideo)
{
    TagAd ad;
    ad.tracking = R"(<Tracking event="progress" offset="00:00:01.250">http://t/a</Tracking>
                     <Tracking event="progress" offset="45%">http://t/b</Tracking>
                     <Tracking event="progress" offset="00:00:00">http://t/c</Tracking>
                     <Tracking event="progress" offset="100%">http://t/d</Tracking>
                     <Tracking event="progress" offset="00:00:11">http://t/never</Tracking>)";
    const auto trace = trace_of(ad);

    EXPECT_THAT(timed_trackers(trace),
                ElementsAre("impression 0.3", "progress 0.3", "progress 1.55", "progress 4.8", "progress 10.3"));
    EXPECT_THAT(addresses_of(trace, "progress"), ElementsAre("http://t/c", "http://t/a", "http://t/b", "http://t/d"));
}

TEST(TagTracking, TheDurationOfTheFileCountsNotThatOfTheDocument)
{
    const TagAd ad{.events = {"midpoint", "complete"}};

    EXPECT_THAT(timed_trackers(trace_of(ad, "", {{"video", {{"duration", 4}}}})),
                ElementsAre("impression 0.3", "midpoint 2.3", "complete 4.3"));
}

TEST(TagTracking, AllImpressionsAndAllTrackersOfAnEventAreSentInOrder)
{
    TagAd ad;
    ad.in_line = "<Impression>http://t/second</Impression>";
    ad.tracking = R"(<Tracking event="start">http://t/1</Tracking><Tracking event="start">http://t/2</Tracking>
                     <Tracking event="start">http://t/1</Tracking>)";
    const auto trace = trace_of(ad);

    EXPECT_THAT(addresses_of(trace, "impression"), ElementsAre("http://t/impression", "http://t/second"));
    EXPECT_THAT(addresses_of(trace, "start"), ElementsAre("http://t/1", "http://t/2", "http://t/1"));
}

TEST(TagTracking, AnAdWhoseVideoNeverAppearsHasNoImpression)
{
    EXPECT_THAT(trackers(trace_of(complete_ad(), "", {{"video", {{"loadAfter", 100}}}})), IsEmpty());
}

// ----------------------------------------------------------------------------------------------------------- the
// viewer

TEST(TagTracking, APauseAndAResumeAreSentEachTime)
{
    const auto trace =
        trace_of(complete_ad(), tap("1.3", "btnPlayAndPause") + "," + tap("2.3", "btnPlayAndPause") + "," +
                                    tap("3.3", "btnPlayAndPause") + "," + tap("4.3", "btnPlayAndPause"));

    EXPECT_THAT(timed_trackers(trace),
                ElementsAre("loaded 0.3", "impression 0.3", "creativeView 0.3", "start 0.3", "pause 1.3", "resume 2.3",
                            "pause 3.3", "resume 4.3", "firstQuartile 4.8", "viewable 6.3", "midpoint 7.3",
                            "thirdQuartile 9.8", "complete 12.3"));
}

TEST(TagTracking, AStallIsNeitherAPauseNorAResumeAndDelaysTheRest)
{
    EXPECT_THAT(timed_trackers(trace_of(complete_ad(), "", {{"video", {{"stalls", {{6, 1.5}}}}}})),
                ElementsAre("loaded 0.3", "impression 0.3", "creativeView 0.3", "start 0.3", "viewable 2.3",
                            "firstQuartile 2.8", "midpoint 5.3", "thirdQuartile 9.3", "complete 11.8"));
}

TEST(TagTracking, MuteAndUnmuteAreSentEachTime)
{
    const TagAd ad{.events = {"mute", "unmute"}};

    EXPECT_THAT(
        timed_trackers(trace_of(ad, tap("1", "btnMute") + "," + tap("2", "btnMute") + "," + tap("3", "btnMute"))),
        ElementsAre("impression 0.3", "mute 1", "unmute 2", "mute 3"));
}

TEST(TagTracking, AReplayIsARewindAndSendsNothingAgainThatOccursOnce)
{
    const auto trace = trace_of(complete_ad(), tap("11", "btnReplay"), json::object(), 40);
    const Texts sent = timed_trackers(trace);

    ASSERT_THAT(sent, testing::SizeIs(10));
    EXPECT_EQ(sent.back(), "rewind 11");
}

TEST(TagTracking, AVideoThatIsPausedInAReplaySendsPauseAndResume)
{
    const TagAd ad{.events = {"start", "pause", "resume", "rewind", "complete"}};

    EXPECT_THAT(timed_trackers(trace_of(ad, tap("11", "btnReplay") + "," + tap("12", "btnPlayAndPause") + "," +
                                                tap("13", "btnPlayAndPause"))),
                ElementsAre("impression 0.3", "start 0.3", "complete 10.3", "rewind 11", "pause 12", "resume 13"));
}

TEST(TagTracking, ASeekBackIsARewindAndSendsNothingAgain)
{
    EXPECT_THAT(timed_trackers(trace_of(complete_ad(), R"({"at": 6.3, "script": ["setVideoSeekToTime", 2]})")),
                ElementsAre("loaded 0.3", "impression 0.3", "creativeView 0.3", "start 0.3", "viewable 2.3",
                            "firstQuartile 2.8", "midpoint 5.3", "rewind 6.3", "thirdQuartile 11.8", "complete 14.3"));
}

TEST(TagTracking, PartsThatASeekLeavesOutHaveNotBeenPlayed)
{
    TagAd ad = complete_ad();
    ad.tracking = R"(<Tracking event="progress" offset="00:00:05">http://t/5</Tracking>
                     <Tracking event="progress" offset="00:00:08">http://t/8</Tracking>)";

    EXPECT_THAT(timed_trackers(trace_of(ad, R"({"at": 1.3, "script": ["setVideoSeekToTime", 7]})")),
                ElementsAre("loaded 0.3", "impression 0.3", "creativeView 0.3", "start 0.3", "thirdQuartile 1.8",
                            "progress 2.3", "viewable 3.3"))
        << "and the video has not been played whole";
}

TEST(TagTracking, PartsThatASeekLeftOutAreSentOnceTheyHaveBeenPlayed)
{
    const TagAd ad{.events = {"firstQuartile", "midpoint", "thirdQuartile", "complete", "rewind"}};

    EXPECT_THAT(
        timed_trackers(trace_of(ad, R"({"at": 1.3, "script": ["setVideoSeekToTime", 9]},)" + tap("3", "btnReplay"))),
        ElementsAre("impression 0.3", "rewind 3", "firstQuartile 5.5", "midpoint 8", "thirdQuartile 10.5",
                    "complete 13"));
}

TEST(TagTracking, LeavingTheApplicationPausesTheVideo)
{
    const TagAd ad{.events = {"pause", "resume", "rewind", "complete"}};
    const auto sent = timed_trackers(trace_of(
        ad, R"({"at": 2.3, "app": "background"}, {"at": 5, "app": "foreground"}, {"at": 5, "app": "active"},)" +
                tap("6", "btnPlayAndPause")));

    EXPECT_THAT(sent, ElementsAre("impression 0.3", "pause 2.3", "resume 6", "complete 15"))
        << "the controller goes back to where the viewer left, a second after the video plays";
}

// ------------------------------------------------------------------------------------------------------------ the
// close

TEST(TagTracking, AViewerWhoLeavesASkippableAdSkipsIt)
{
    TagAd ad = complete_ad();
    ad.linear = R"(skipoffset="00:00:03")";

    EXPECT_THAT(timed_trackers(trace_of(ad, R"({"at": 3.2, "touch": [25, 69]}, {"at": 4, "touch": [25, 69]})")),
                ElementsAre("loaded 0.3", "impression 0.3", "creativeView 0.3", "start 0.3", "viewable 2.3",
                            "firstQuartile 2.8", "skip 4"))
        << "not before the offset, and nothing after the skip";
}

TEST(TagTracking, ASkipOffsetInPercentIsOneOfTheDuration)
{
    TagAd ad{.events = {"skip"}};
    ad.linear = R"(skipoffset="50%")";

    EXPECT_THAT(timed_trackers(trace_of(ad, R"({"at": 5.2, "touch": [25, 69]}, {"at": 6, "touch": [25, 69]})")),
                ElementsAre("impression 0.3", "skip 6"));
}

TEST(TagTracking, ASkippableAdThatHasEndedIsClosed)
{
    TagAd ad{.events = {"skip", "closeLinear", "close"}};
    ad.linear = R"(skipoffset="00:00:03")";

    EXPECT_THAT(timed_trackers(trace_of(ad, R"({"at": 11, "touch": [25, 69]})")),
                ElementsAre("impression 0.3", "closeLinear 11", "close 11"));
}

TEST(TagTracking, AnAdWithoutASkipOffsetCanBeClosedAtItsEndOnly)
{
    const TagAd ad{.events = {"skip", "closeLinear", "close"}};

    EXPECT_THAT(timed_trackers(trace_of(ad, R"({"at": 9, "touch": [25, 69]}, {"at": 11, "touch": [25, 69]})")),
                ElementsAre("impression 0.3", "closeLinear 11", "close 11"));
}

// ------------------------------------------------------------------------------------------------------------- the
// view

TEST(TagTracking, AnAdIsViewableAfterTwoSecondsInOnePiece)
{
    TagAd ad;
    ad.in_line = Viewable;

    EXPECT_THAT(timed_trackers(trace_of(ad, tap("2", "btnPlayAndPause") + "," + tap("4", "btnPlayAndPause"))),
                ElementsAre("impression 0.3", "viewable 6"));
}

TEST(TagTracking, AnAdThatIsLeftBeforeTwoSecondsIsNotViewable)
{
    TagAd ad;
    ad.in_line = Viewable;
    ad.linear = R"(skipoffset="00:00:00")";

    EXPECT_THAT(timed_trackers(trace_of(ad, R"({"at": 2.1, "touch": [25, 69]})")),
                ElementsAre("impression 0.3", "notViewable 2.1"));
}

TEST(TagTracking, WithoutAScreenTheViewIsUndetermined)
{
    TagAd ad;
    ad.in_line = Viewable;

    EXPECT_THAT(timed_trackers(trace_of(ad, "", {{"device", {{"screen", nullptr}}}})),
                ElementsAre("impression 0.3", "viewUndetermined 0.3"));
}

TEST(TagTracking, TheScaleButtonExpandsAndCollapsesThePlayer)
{
    const TagAd ad{.events = {"playerExpand", "fullscreen", "playerCollapse", "exitFullscreen"}};

    EXPECT_THAT(
        timed_trackers(trace_of(ad, tap("1", "btnScreenScale") + "," + tap("2", "btnScreenScale"))),
        ElementsAre("impression 0.3", "playerExpand 1", "fullscreen 1", "playerCollapse 2", "exitFullscreen 2"));
}

// -------------------------------------------------------------------------------------------------------------- clicks

constexpr const char* Clicks = "<VideoClicks><ClickThrough>http://shop/[ASSETURI]</ClickThrough>"
                               "<ClickTracking>http://t/click</ClickTracking><CustomClick>http://t/custom</CustomClick>"
                               "</VideoClicks>";

TEST(TagTracking, TheActionButtonClicksThroughOncePerTap)
{
    TagAd ad{.events = {"pause"}};
    ad.in_linear = Clicks;
    const auto trace = trace_of(ad, tap("1", "btnActionOne"));

    EXPECT_THAT(timed_trackers(trace), ElementsAre("impression 0.3", "clickTracking 1", "pause 1"));
    const auto opened = lines_of(trace, "kit", "browser.expand");
    ASSERT_THAT(opened, testing::SizeIs(1));
    EXPECT_EQ(opened[0]["url"], "http://shop/http%3A%2F%2Fm%2Fv.mp4") << "its macros are replaced";
}

TEST(TagTracking, AButtonThatDoesNotClickThroughIsACustomClick)
{
    TagAd ad;
    ad.in_linear = "<VideoClicks><CustomClick>http://t/custom</CustomClick></VideoClicks>";

    EXPECT_THAT(timed_trackers(trace_of(ad, tap("1", "btnActionOne") + "," + tap("2", "btnActionOne"))),
                ElementsAre("impression 0.3", "customClick 1", "customClick 2"));
}

TEST(TagTracking, TheEndCardsButtonIsAClickThrough)
{
    TagAd ad;
    ad.in_linear = Clicks;

    EXPECT_THAT(timed_trackers(trace_of(
                    ad, R"({"at": 2, "touch": [100, 600]}, {"at": 2, "script": ["mraid.open", "http://shop/"]})")),
                ElementsAre("impression 0.3", "clickTracking 2"));
}

std::string icon(const std::string& program, const std::string& picture, const std::string& name)
{
    return "<Icon program=\"" + program + "\"><StaticResource creativeType=\"image/png\">" + picture +
           "</StaticResource><IconClicks><IconClickThrough>http://why/" + name + "</IconClickThrough>" +
           "<IconClickTracking>http://t/" + name +
           "/click</IconClickTracking></IconClicks><IconViewTracking>http://t/" + name +
           "/view</IconViewTracking></Icon>";
}

TEST(TagTracking, TheAdChoicesIconIsViewedOnceAndItsClickOpensItsPage)
{
    TagAd ad;
    ad.in_linear =
        "<Icons>" + icon("other", "http://i/o.png", "other") + icon("AdChoices", "http://i/a.png", "why") + "</Icons>";
    const auto trace = trace_of(ad, tap("2", "btnBrandIcon"), {{"net", {{"http://i/a.png", Picture}}}});

    EXPECT_THAT(timed_trackers(trace), ElementsAre("impression 0.3", "iconView 0.3", "iconClick 2"));
    EXPECT_THAT(addresses_of(trace, "iconView"), ElementsAre("http://t/why/view"));
    EXPECT_THAT(addresses_of(trace, "iconClick"), ElementsAre("http://t/why/click"));
    const auto opened = lines_of(trace, "kit", "browser.expand");
    ASSERT_THAT(opened, testing::SizeIs(1));
    EXPECT_EQ(opened[0]["url"], "http://why/why");
}

TEST(TagTracking, AnIconWithoutAPictureIsNotViewed)
{
    TagAd ad;
    ad.in_linear = "<Icons>" + icon("AdChoices", "http://i/a.png", "why") + "</Icons>";

    EXPECT_THAT(timed_trackers(trace_of(ad, "", {{"net", {{"http://i/a.png", {{"fail", "HTTP status 404"}}}}}})),
                ElementsAre("impression 0.3"));
}

TEST(TagTracking, WhatAnIconDemandsAndDoesNotGetIsListed)
{
    TagAd ad;
    ad.in_linear = R"(<Icons><Icon program="AdChoices" offset="00:00:02" duration="00:00:03"><StaticResource>
                      http://i/a.png</StaticResource></Icon></Icons>)";
    Texts ignored;
    for (const json& line : lines_of(trace_of(ad), "vast", "ignored"))
        ignored.push_back(line["element"]);

    EXPECT_THAT(ignored, testing::IsSupersetOf({"offset", "duration"}));
}

// --------------------------------------------------------------------------------------------------------- companions

std::string companion(const std::string& resource, const std::string& required = "none")
{
    return "<Creative><CompanionAds required=\"" + required + R"("><Companion width="300" height="250">)" + resource +
           "<CompanionClickThrough>http://shop/</CompanionClickThrough>"
           "<CompanionClickTracking>http://t/companion/click</CompanionClickTracking><TrackingEvents>"
           R"(<Tracking event="creativeView">http://t/companion/view</Tracking></TrackingEvents></Companion>)"
           "</CompanionAds></Creative>";
}

constexpr const char* Static = R"(<StaticResource creativeType="image/png">http://i/c.png</StaticResource>)";

TEST(TagTracking, ACompanionIsViewedOnceAndItsClickIsItsOwn)
{
    TagAd ad;
    ad.in_linear = Clicks;
    ad.creatives = companion(Static);
    const auto trace =
        trace_of(ad, R"({"at": 2, "touch": [100, 600]}, {"at": 2, "script": ["mraid.open", "http://shop/"]})");

    EXPECT_THAT(addresses_of(trace, "companionView"), ElementsAre("http://t/companion/view"));
    EXPECT_THAT(addresses_of(trace, "companionClick"), ElementsAre("http://t/companion/click"));
    EXPECT_THAT(addresses_of(trace, "clickTracking"), IsEmpty());
}

TEST(TagTracking, APageThatWasNotTouchedClicksNothing)
{
    TagAd ad;
    ad.creatives = companion(Static);

    EXPECT_THAT(trackers(trace_of(ad, R"({"at": 2, "script": ["mraid.open", "http://shop/"]})")),
                Not(Contains("companionClick")));
}

// -------------------------------------------------------------------------------------------------------------- errors

TEST(TagTracking, AVideoThatCannotBePlayedIsError405AndTheAdEnds)
{
    const auto trace = trace_of(complete_ad(), "", {{"video", {{"errorForGood", 0}}}});

    EXPECT_THAT(addresses_of(trace, "error"), ElementsAre("http://t/error?405"));
    const auto failed = lines_of(trace, "vast", "failed");
    ASSERT_THAT(failed, testing::SizeIs(1));
    EXPECT_EQ(failed[0]["error"], 405);
    EXPECT_THAT(lines_of(trace, "player", "drop"), testing::SizeIs(1)) << "it closes";
}

TEST(TagTracking, AFailureFromWhichTheVideoRecoversIsReportedOnceAndTheAdGoesOn)
{
    TagAd ad{.in_line = Error, .events = {"start", "midpoint", "complete", "pause", "resume"}};

    EXPECT_THAT(timed_trackers(trace_of(ad, "", {{"video", {{"error", 2}}}})),
                ElementsAre("impression 0.3", "start 0.3", "error 2.3", "midpoint 5.3", "complete 10.3"));
}

TEST(TagTracking, AVideoThatBreaksOffEndsTheAd)
{
    TagAd ad{.in_line = std::string(Error) + Viewable, .events = {"start", "complete", "closeLinear", "skip"}};
    const auto trace = trace_of(ad, "", {{"video", {{"errorForGood", 2}}}});

    EXPECT_THAT(timed_trackers(trace), ElementsAre("impression 0.3", "start 0.3", "viewable 2.3", "error 2.3"));
    EXPECT_THAT(lines_of(trace, "player", "drop"), testing::SizeIs(1));
}

TEST(TagTracking, AViewerWhoGivesUpWaitingForTheVideoIsError402)
{
    TagAd ad = complete_ad();
    const auto trace = trace_of(ad, R"({"at": 16, "touch": [25, 25]}, {"at": 16, "touch": [350, 25]},
                                       {"at": 16, "touch": [350, 69]}, {"at": 16, "touch": [25, 69]})",
                                {{"video", {{"loadAfter", 100}}}});

    ASSERT_THAT(lines_of(trace, "guard", "close"), testing::SizeIs(1)) << "the guard's button shows after 15 s";
    EXPECT_THAT(addresses_of(trace, "error"), ElementsAre("http://t/error?402"));
    EXPECT_THAT(trackers(trace), ElementsAre("error"));
}

TEST(TagTracking, AnInteractiveFileThatIsNotExecutedIsError409AndTheVideoPlays)
{
    TagAd ad{.in_line = Error, .events = {"start"}};
    ad.media +=
        R"(<InteractiveCreativeFile apiFramework="SIMID" type="text/html">http://m/i.html</InteractiveCreativeFile>)";

    const auto trace = trace_of(ad);
    EXPECT_THAT(addresses_of(trace, "error"), ElementsAre("http://t/error?409"));
    EXPECT_THAT(trackers(trace), ElementsAre("error", "impression", "start"));
}

TEST(TagTracking, AVerificationIsReportedAsNotExecuted)
{
    TagAd ad;
    ad.in_line = std::string(Error) +
                 R"(<AdVerifications><Verification vendor="a"><JavaScriptResource apiFramework="omid">http://v/a.js
                    </JavaScriptResource><TrackingEvents><Tracking event="verificationNotExecuted">
                    http://t/not?[REASON]</Tracking></TrackingEvents></Verification></AdVerifications>)";
    const auto trace = trace_of(ad);

    EXPECT_THAT(addresses_of(trace, "verificationNotExecuted"), ElementsAre("http://t/not?2")) << "2: not supported";
    EXPECT_THAT(addresses_of(trace, "error"), ElementsAre("http://t/error?410"));
}

TEST(TagTracking, ACompanionOfWhichNothingCanBeShownIsError604AndTheVideoPlays)
{
    TagAd ad{.in_line = Error};
    ad.creatives =
        companion(R"(<StaticResource creativeType="application/x-shockwave-flash">http://i/c.swf</StaticResource>)");
    const auto trace = trace_of(ad);

    EXPECT_THAT(addresses_of(trace, "error"), ElementsAre("http://t/error?604"));
    EXPECT_THAT(trackers(trace), ElementsAre("error", "impression")) << "an end card takes its place";
}

// -------------------------------------------------------------------------------------------------------------- macros

TEST(TagTracking, TheControllersMacrosAreReplacedFirstThenThoseOfTheStandard)
{
    TagAd ad;
    ad.tracking = R"(<Tracking event="midpoint">http://t/m?{CurrentTime}&amp;[ADPLAYHEAD]&amp;%5BASSETURI%5D&amp;)"
                  R"([PLAYERSTATE]&amp;[OTHER]</Tracking>)";

    EXPECT_THAT(addresses_of(trace_of(ad, tap("1", "btnMute")), "midpoint"),
                ElementsAre("http://t/m?5.000000&00%3A00%3A05.000&http%3A%2F%2Fm%2Fv.mp4&muted&[OTHER]"));
}

// -------------------------------------------------------------------------------------------------------------- limits

TEST(TagTracking, ThousandsOfTrackersAreSentOnceEach)
{
    TagAd ad;
    for (int n = 0; n < 9900; ++n)
        ad.tracking += "<Tracking event=\"" + std::string(n % 2 == 0 ? "start" : "progress\" offset=\"00:00:04") +
                       "\">http://t/" + std::to_string(n) + "</Tracking>";

    const auto trace = trace_of(ad);
    EXPECT_THAT(addresses_of(trace, "start"), testing::SizeIs(4950));
    EXPECT_THAT(addresses_of(trace, "progress"), testing::SizeIs(4950));
    EXPECT_EQ(addresses_of(trace, "progress").back(), "http://t/9899");
}

TEST(TagTracking, TheLimitOfRequestsHoldsForTrackersAsWell)
{
    std::string impressions;
    for (int n = 0; n < 9000; ++n)
        impressions += "<Impression>http://t/i</Impression>";
    TagScenario scenario{
        .documents = {{TagAddress, vast_document(wrapper_element("http://ads/2", impressions))},
                      {"http://ads/2", vast_document(wrapper_element("http://ads/3", impressions))},
                      {"http://ads/3", vast_document(ad_element({.in_line = impressions, .events = {"start"}}))}},
        .further = {{"host", {{"trackerLimit", true}}}}};
    const auto trace = trace_of(scenario);

    const std::size_t sent = lines_of(trace, "request").size();
    EXPECT_LE(sent, 20'000U);
    EXPECT_GE(sent, 19'990U);
    std::int64_t refused = 0;
    for (const json& line : lines_of(trace, "kit", "request.refused"))
        refused += line["times"].get<std::int64_t>();
    EXPECT_EQ(sent + static_cast<std::size_t>(refused), 27'001U + 1 + 1) << "with start and the page";
}

} // namespace
} // namespace qoro::test
