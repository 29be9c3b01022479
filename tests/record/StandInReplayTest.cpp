#include "tests/record/RecordedSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

// Sessions that hand something to a calendar, a message composer or a store, which are screens over the ad.

namespace qoro::test
{

namespace
{

using nlohmann::json;

/// An ad whose button does something at second 1; the viewer touches the close button of the screen over the ad at
/// second 3, and the ad's own at second 5.
std::string session(const json& button, const json& host = json::object())
{
    json described{{"btn_text", "Go"}};
    described.update(button);
    return json{{"host", host},
                {"video", {{"duration", 10}}},
                {"ad",
                 {{"strVideoUrl", "http://ad/v.mp4"},
                  {"portraitModeType", 2},
                  {"bIsAutoStart", true},
                  {"arrayButtonsInfo", {described}},
                  {"arrayCloseTrackingUrls", {"http://t/close?at={CurrentTime}"}}}},
                {"steps",
                 {{{"open", 0}},
                  {{"at", 1}, {"tap", "btnActionOne"}},
                  {{"at", 2}, {"touch", {100, 400}}},
                  {{"at", 3}, {"touch", {351, 24}}},
                  {{"at", 5}, {"touch", {25, 69}}},
                  {{"at", 8}, {"snapshot", true}}}}}
        .dump();
}

/// The line of a viewer who has returned to the ad.
const json Returned{{"what", "super"}, {"do", "closeInAppApplication"}};

/// What a trace hands over, "" for nothing.
std::string handed_over(const std::string& trace)
{
    for (const json& line : parsed(trace))
        if (line["what"] == "kit" && line["do"] == "handOver")
            return line["to"].get<std::string>() + " " + line["text"].get<std::string>();
    return "";
}

std::ptrdiff_t count(const std::string& trace, const json& members)
{
    const auto lines = parsed(trace);
    return std::ranges::count_if(lines, [&](const json& line) {
        return std::ranges::all_of(members.items(), [&](const auto& member) {
            return line.contains(member.key()) && line[member.key()] == member.value();
        });
    });
}

} // namespace

TEST(StandInReplay, ACalendarEventIsHandedOverAgain)
{
    const json event{{"summary", "Lesson"}, {"description", "Room 7"}, {"start", "2027-03-22T22:00-08:00"}};
    const Recorded made = record(session({{"action", "cre_cal_event"}, {"data", {{"e", event}}}}), {.stand_ins = true});
    EXPECT_THAT(handed_over(made.trace), testing::HasSubstr("SUMMARY:Lesson"));
    EXPECT_EQ(replayed(made.text), made.trace);
}

TEST(StandInReplay, AMessageIsHandedOverAndTheViewerReturnsAgain)
{
    const Recorded made =
        record(session({{"action", "send_sms"}, {"data", {{"tel", "tel:5551"}, {"b", "Hello"}}}}), {.stand_ins = true});
    EXPECT_EQ(handed_over(made.trace), "composer sms:5551?body=Hello");
    EXPECT_EQ(count(made.trace, Returned), 1) << made.trace;
    EXPECT_EQ(replayed(made.text), made.trace);
}

TEST(StandInReplay, AStoresAddressIsHandedOverAndTheViewerReturnsAgain)
{
    const Recorded made =
        record(session({{"action", "open_store"}, {"app_u", "appstream://org.example.App"}, {"data", json::object()}}),
               {.stand_ins = true});
    EXPECT_EQ(handed_over(made.trace), "store appstream://org.example.App");
    EXPECT_EQ(count(made.trace, Returned), 1) << made.trace;
    EXPECT_EQ(replayed(made.text), made.trace);
}

TEST(StandInReplay, AStoreWithoutPagesShowsAnItemsValuesAgain)
{
    const Recorded made =
        record(session({{"action", "open_store"}, {"id", 42}, {"data", json::object()}}, {{"storePage", nullptr}}),
               {.stand_ins = true});
    EXPECT_EQ(handed_over(made.trace), "store id: 42");
    EXPECT_EQ(replayed(made.text), made.trace);
}

} // namespace qoro::test
