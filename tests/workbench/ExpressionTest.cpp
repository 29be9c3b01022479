#include "workbench/expression/Expression.h"

#include "formats/InputError.h"
#include "workbench/expression/Evaluation.h"
#include "workbench/expression/Holds.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{
namespace
{

constexpr std::int64_t OneSecond = 1'000'000;

SeenControl mute_button(std::optional<CGPoint> touchable, CGRect frame = {10, 10, 44, 44})
{
    return {.name = "btnMute",
            .frame = frame,
            .visible = touchable ? std::optional(frame) : std::nullopt,
            .touchable = touchable,
            .is_button = true,
            .text = "Mute all"};
}

/// Four lines. The ad opens at 1 s, its close button and the video come at 3 s, the ad ends covered at 8 s, and the
/// session ends at 10 s.
std::optional<bool> value_in_session(const std::string& text)
{
    const ExpressionNode expression = parse_expression(text, "test");
    Evaluation evaluation(expression, {375, 812});
    evaluation.add_sight({.at = 0});
    evaluation.add_sight({.at = OneSecond, .open = true, .controls = {mute_button(CGPoint{20, 20})}, .page = true});
    evaluation.add_line(OneSecond, R"({"t":1,"what":"request","url":"http://t/start?a=1","for":"tracking"})");
    evaluation.add_line(2 * OneSecond, R"({"t":2,"what":"volume","value":0.5})");
    // Seen by nobody: it lasts no time.
    evaluation.add_sight({.at = 3 * OneSecond, .open = true, .other_screen = true});
    evaluation.add_sight({.at = 3 * OneSecond,
                          .open = true,
                          .controls = {mute_button(CGPoint{20, 20})},
                          .close = true,
                          .video = true,
                          .sound = true});
    evaluation.add_line(4 * OneSecond, R"({"t":4,"what":"js","event":"video_play","data":{"e":{"n":"7"}},"x":null})");
    evaluation.add_line(5 * OneSecond, R"({"t":5,"what":"request","url":"http://t/start?a=2","for":"tracking"})");
    evaluation.add_sight({.at = 8 * OneSecond, .open = true, .controls = {mute_button(std::nullopt)}});
    Summary summary;
    summary.opened = OneSecond;
    summary.closed = 9 * OneSecond;
    summary.blocked = OneSecond / 2;
    summary.after_close.emplace().timers = {"timerBufferSufferTime"};
    evaluation.end(10 * OneSecond, summary);
    return evaluation.value();
}

std::string complaint_about(const std::string& text)
{
    try {
        parse_expression(text, "--while");
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(Expression, EachFactAndConnectionIsTrueOrFalse)
{
    const std::vector<std::pair<std::string, bool>> expected{
        {"line request", true},
        {"line fetch", false},
        {"line *", true},
        {"line * never", false},
        {"line fetch never", true},
        {"line request url=\"http://t/start*\" for=tracking twice", true},
        {"line request url=*a=1 once", true},
        {"line request once", false},
        {"line request 2 times", true},
        {"line request at least 2 times", true},
        {"line request at least 3 times", false},
        {"line request at most 1 times", false},
        {"line request at most 2 times", true},
        {"line request url='*start*2'", true},
        {"line request url=\"*\\**\"", false},
        {"line request url!=\"*1\"", true},
        {"line request missing!=\"*1\"", false},
        {"line volume value=0.50", true},
        {"line volume value>0.5", false},
        {"line volume value>=0.5 value <= 0.5", true},
        {"line volume value<0.6 t < 3", true},
        {"line js data.e.n=7", true},
        {"line js x=null", true},
        {"line js x=*", false},
        {"line request before line js before line request", true},
        {"line js before line volume", false},
        {"line request before line request before line request", false},
        {"not line fetch", true},
        {"line fetch or line js and line fetch", false},
        {"(line js or line fetch) and line js", true},
        {"video visible", true},
        {"video visible at end", false},
        {"video visible at the end", false},
        {"video visible at 3", true},
        {"video visible at 2.9", false},
        {"video visible within 1", false},
        {"video visible within 2", true},
        {"video visible for 5", true},
        {"video visible for 5.1", false},
        {"video visible sometime", true},
        {"page visible at 1", true},
        {"sound audible at 7", true},
        {"overlay visible", false},
        {"ad open at end", true},
        {"ad open at 0.5", false},
        {"close reachable within 1", false},
        {"(ad open and not close reachable) for 2", true},
        {"(ad open and not close reachable) for 2.1", false},
        {"(video visible or page visible) for 7", true},
        {"view btnMute covered at end", true},
        {"view btnMute covered at 5", false},
        {"view btnMute visible at 5", true},
        {"view btnMute touchable at end", false},
        {"view btnMute outside", false},
        {"view btnMute absent at end", false},
        {"view btnClose absent at end", true},
        {"view btnMute shows \"Mute*\"", true},
        {"view btnMute shows \"Mute*\" at end", false},
        {"ad opened", true},
        {"ad closed within 8", true},
        {"ad closed within 7", false},
        {"controller released", false},
        {"controller destroyed", false},
        {"timers left after close", true},
        {"timers left", false},
        {"windows left at end", false},
        {"main thread blocked", true},
        {"main thread blocked for 0.5", false},
    };
    for (const auto& [text, value] : expected)
        EXPECT_EQ(value_in_session(text), std::optional(value)) << text;
}

TEST(Expression, WhatTheSessionEndsTooEarlyForIsNeitherTrueNorFalse)
{
    for (const char* text : {"overlay visible within 15", "not overlay visible within 15", "overlay visible at 11",
                             "controller released within 15", "line js and not overlay visible within 15"})
        EXPECT_EQ(value_in_session(text), std::nullopt) << text;
    EXPECT_EQ(value_in_session("line fetch and overlay visible within 15"), std::optional(false));
    EXPECT_EQ(value_in_session("line js or overlay visible within 15"), std::optional(true));
}

TEST(Expression, AMistakeIsNamedWithItsColumnAndWhatWasExpected)
{
    const std::vector<std::pair<std::string, std::string>> expected{
        {"", "--while: column 1: expected not, (, line, view,"},
        {"lines request", "--while: column 1: expected not, (, line, view,"},
        {"line", "--while: column 5: expected a kind of trace line: * or one of step,"},
        {"line tracker", "--while: column 6: expected a kind of trace line:"},
        {"line request url=", "--while: column 18: expected a value, got the end"},
        {"line request url!x", "--while: column 18: expected = after !, got \"x\""},
        {"line request url=\"x", "--while: column 18: expected the text to end with \""},
        {"line request url=\"\\x\"", "--while: column 19: expected \\\\, \\\", \\' or \\*"},
        {"line volume value<high", "--while: column 19: expected a number, got \"high\""},
        {"line request at 2", "--while: column 17: expected least or most, got \"2\""},
        {"line request at least x", "--while: column 23: expected a whole number of lines, got \"x\""},
        {"line request 2 and", "--while: column 16: expected times, got \"and\""},
        {"line js before js", "--while: column 16: expected line, got \"js\""},
        {"line js and", "--while: column 12: expected not, (, line,"},
        {"line js line js", "--while: column 9: expected and, or, or the end, got \"line\""},
        {"(line js", "--while: column 9: expected and, or, or ), got the end"},
        {"line js)", "--while: column 8: expected and, or, or the end, got \")\""},
        {"(line js) at end", "--while: column 11: a time applies to what the viewer sees and hears;"},
        {"(video visible at 3) at end", "--while: column 22: a time applies to"},
        {"view btnMut covered", "--while: column 6: expected a view: one of btnMute,"},
        {"view btnMute gone", "--while: column 14: expected covered, visible, touchable, outside, absent or shows"},
        {"video visible within soon", "--while: column 22: expected a number of seconds, got \"soon\""},
        {"video visible at the start", "--while: column 22: expected end, got \"start\""},
        {"video audible", "--while: column 7: expected visible after video, got \"audible\""},
        {"ad gone", "--while: column 4: expected one of open, opened, closed after ad, got \"gone\""},
        {"timers left after lunch", "--while: column 19: expected close, got \"lunch\""},
        {"main road", "--while: column 6: expected thread, got \"road\""},
        {"line js event=\"ä\" ö", "--while: column 19: expected and, or, or the end, got \"ö\""},
        {std::string(1000, '('), "--while: column 101: expected at most 100 levels"},
    };
    for (const auto& [text, complaint] : expected)
        EXPECT_TRUE(complaint_about(text).starts_with(complaint)) << complaint_about(text) << "\n" << complaint;
}

TEST(Expression, ARecordAndTheSessionItselfAgree)
{
    const Scenario scenario = read_scenario(
        R"({"video": {"duration": 8}, "ad": {"strVideoUrl": "http://m/v.mp4", "bIsAutoStart": true, "fVideoWidth": 16,
            "fVideoHeight": 9, "portraitModeType": 2, "portraitVideoPos": 1, "iCloseBtnCountdown": 3, "iBufferingSufferTime": 20,
            "dicTrackingUrls": {"start": ["http://t/start"]}},
            "steps": [{"open": 0}, {"at": 5, "tap": "btnMute"}, {"at": 12, "tap": "btnClose"}, {"at": 13, "device": {}}]})",
        "test");
    const SessionRecord record = record_session(scenario);
    for (const auto& [text, value] :
         std::vector<std::pair<std::string, bool>>{{"line request url=http://t/start once", true},
                                                   {"line step tap=btnMute before line step tap=btnClose", true},
                                                   {"close reachable within 5", true},
                                                   {"close reachable within 2", false},
                                                   {"sound audible at 4", true},
                                                   {"sound audible at 6", false},
                                                   {"view btnMute touchable", true},
                                                   {"ad closed", true},
                                                   {"ad open at end", false},
                                                   {"ad closed within 5", false}}) {
        const ExpressionNode expression = parse_expression(text, "test");
        EXPECT_EQ(holds(expression, scenario), value) << text;
        EXPECT_EQ(holds(expression, scenario, record), value) << text;
    }
}

} // namespace qoro
