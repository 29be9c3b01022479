#include "formats/LogLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace qoro
{
namespace
{

struct Counter final : EventSink {
    void receive(const Event&) override { ++count; }
    int count = 0;
};

TEST(LogLines, HaveTheKitsLevels)
{
    EXPECT_EQ(log_level_name(ZulixLogTagOfDebug), "debug");
    EXPECT_EQ(log_level_name(ZulixLogTagOfNote), "note");
    EXPECT_EQ(log_level_name(5), "");
    EXPECT_EQ(log_level_name(-1), "");
    EXPECT_EQ(log_level_named("warning"), ZulixLogTagOfWarnning);
    EXPECT_FALSE(log_level_named("Warning"));
}

TEST(LogLines, AreThoseOfTheLogAndTheConsole)
{
    std::vector<std::string> lines;
    const LogSink sink = [&lines](ZulixLogTag level, std::string_view message) {
        lines.push_back(std::string(log_level_name(level)) + " " + std::string(message));
    };
    Counter next;
    LogFilter filter(sink, next);

    filter.receive(event::Logged{.level = 3, .message = "InApp failAdRequest"});
    filter.receive(event::ParentClicked{});
    filter.receive(event::ConsoleLogged{.message = "playbackFinished"});

    EXPECT_EQ(lines, (std::vector<std::string>{"error InApp failAdRequest", "info playbackFinished"}));
    EXPECT_EQ(next.count, 3);
}

TEST(LogLines, NameThePlaceOfALineOfThePage)
{
    std::vector<std::string> lines;
    const LogSink sink = [&lines](ZulixLogTag level, std::string_view message) {
        lines.push_back(std::string(log_level_name(level)) + " " + std::string(message));
    };

    for (const char* level : {"debug", "log", "info", "warn", "error"})
        pass_log_line(sink, event::PageConsole{level, "hello", "http://a/page.html", 12, 1});
    pass_log_line(sink, event::PageError{"exception", "TypeError: x", nullptr, std::nullopt, std::nullopt, 1});
    pass_log_line(sink, event::PageError{"resource", "404", "http://a/x.png", std::nullopt, 404, 1});

    EXPECT_EQ(lines,
              (std::vector<std::string>{"debug http://a/page.html:12: hello", "info http://a/page.html:12: hello",
                                        "info http://a/page.html:12: hello", "warning http://a/page.html:12: hello",
                                        "error http://a/page.html:12: hello", "error page: TypeError: x",
                                        "error http://a/x.png: 404"}));
}

TEST(LogLines, ReportWhatHappensToATag)
{
    std::vector<std::string> lines;
    const LogSink sink = [&lines](ZulixLogTag level, std::string_view message) {
        lines.push_back(std::string(log_level_name(level)) + " " + std::string(message));
    };
    Counter next;
    LogFilter filter(sink, next);

    filter.receive(event::VastIgnored{"Survey", "surveys are not supported", "/VAST/Ad/InLine/Survey"});
    filter.receive(event::VastIgnored{"Icon", "only one icon is shown", "/VAST/Ad"});
    filter.receive(event::VastFailed{403, "/VAST/Ad: none of its media files can be played"});
    filter.receive(event::VastAdBegun{"a", std::nullopt, "Tea", 0, "http://m/v.mp4"});

    EXPECT_EQ(lines,
              (std::vector<std::string>{"note /VAST/Ad/InLine/Survey: surveys are not supported",
                                        "note /VAST/Ad: Icon: only one icon is shown",
                                        "warning /VAST/Ad: none of its media files can be played (VAST error 403)",
                                        "info VAST ad a with http://m/v.mp4"}));
}

TEST(LogLines, MayHaveNoSink)
{
    Counter next;
    LogFilter(nullptr, next).receive(event::Logged{.level = 3, .message = "InApp failAdRequest"});

    EXPECT_EQ(next.count, 1);
}

TEST(LogLines, AreWrittenFromTheirLevelUp)
{
    std::string written;
    const LogSink sink =
        log_writer(ZulixLogTagOfWarnning, "ad.json", [&written](std::string_view line) { written += line; });

    sink(ZulixLogTagOfInfo, "video play");
    sink(ZulixLogTagOfNote, "Time's up");
    sink(ZulixLogTagOfWarnning, "one\ntwo");
    sink(ZulixLogTagOfError, "InApp failAdRequest");

    EXPECT_EQ(written, "qoro-ad: ad.json: warning: one two\nqoro-ad: ad.json: error: InApp failAdRequest\n");
}

} // namespace
} // namespace qoro
