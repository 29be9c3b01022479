#include "formats/Trace.h"
#include "platform/QoroPhoneGapViewController.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What a creative reports about itself, from its engine to the trace.

namespace qoro
{
namespace
{

struct Lines final : EventSink {
    void receive(const Event& event) override
    {
        if (const auto* console = std::get_if<event::PageConsole>(&event)) {
            ++count;
            times += console->times;
        }
        trace.receive(event);
    }

    explicit Lines(MainLoop& loop) : trace(loop, TraceFormat::Json, [this](std::string_view line) { last = line; }) {}

    std::string last;
    std::int64_t count = 0;
    std::int64_t times = 0;
    Trace trace;
};

struct PageReportsTest : testing::Test {
    PageReportsTest()
    {
        controller->init();
        controller->loadView();
        platform.set_event_sink(&lines);
    }
    ~PageReportsTest() override { platform.set_event_sink(nullptr); }

    std::string line_of(const PageReport& report)
    {
        platform.web->listener->reported(report);
        return lines.last.substr(lines.last.find("\"what\""));
    }

    test::RecordingPlatform platform;
    const std::shared_ptr<QoroPhoneGapViewController> controller = std::make_shared<QoroPhoneGapViewController>();
    Lines lines{platform.loop()};
};

TEST_F(PageReportsTest, OfTheConsoleHaveTheirLevel)
{
    using Kind = PageReport::Kind;
    const std::pair<Kind, std::string> levels[] = {{Kind::Debug, "debug"},
                                                   {Kind::Log, "log"},
                                                   {Kind::Info, "info"},
                                                   {Kind::Warning, "warn"},
                                                   {Kind::Error, "error"}};
    for (const auto& [kind, level] : levels)
        EXPECT_EQ(line_of({.kind = kind, .message = "hello", .file = "http://a/p.html", .line = 12}),
                  R"("what":"page.console","level":")" + level +
                      R"(","message":"hello","file":"http://a/p.html","line":12,"times":1})"
                      "\n");
}

TEST_F(PageReportsTest, OfErrorsHaveTheirKindAndNullForWhatIsUnknown)
{
    using Kind = PageReport::Kind;
    EXPECT_EQ(line_of({.kind = Kind::Exception, .message = "TypeError: x", .file = "http://a/p.html", .line = 3}),
              R"("what":"page.error","kind":"exception","message":"TypeError: x","file":"http://a/p.html","line":3,)"
              R"("status":null,"times":1})"
              "\n");
    EXPECT_EQ(
        line_of({.kind = Kind::Rejection, .message = "no", .file = ""}),
        R"("what":"page.error","kind":"rejection","message":"no","file":null,"line":null,"status":null,"times":1})"
        "\n");
    EXPECT_EQ(line_of({.kind = Kind::Resource, .message = "gone", .file = "http://a/x.png", .status = 404}),
              R"("what":"page.error","kind":"resource","message":"gone","file":"http://a/x.png","line":null,)"
              R"("status":404,"times":1})"
              "\n");
}

TEST_F(PageReportsTest, AreCutAt1000Bytes)
{
    const std::string line = line_of(
        {.kind = PageReport::Kind::Log, .message = std::string(5000, 'm'), .file = "data:" + std::string(5000, 'f')});

    EXPECT_NE(line.find(std::string(1000, 'm') + "..."), std::string::npos);
    EXPECT_LT(line.size(), 2200U);
}

TEST_F(PageReportsTest, BeyondTheLimitAreCountedByTheNextLine)
{
    for (int n = 0; n < 1000; ++n)
        platform.web->listener->reported({.kind = PageReport::Kind::Log, .message = "flood", .file = ""});
    EXPECT_EQ(lines.count, 300);

    platform.let_pass(10);
    platform.web->listener->reported({.kind = PageReport::Kind::Log, .message = "late", .file = "", .times = 5});

    EXPECT_EQ(lines.count, 301);
    EXPECT_EQ(lines.times, 1005);
}

} // namespace
} // namespace qoro
