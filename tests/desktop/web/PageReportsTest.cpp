#include "tests/desktop/web/PageTest.h"

#include <gtest/gtest.h>

#include <algorithm>

// What a creative writes to its console, and its errors.

namespace qoro::test
{
namespace
{

using Kind = PageReport::Kind;

struct ReportRecorder : Recorder {
    void reported(const PageReport& report) override { reports.push_back(report); }
    std::vector<PageReport> reports;
};

class PageReportsTest : public PageTest
{
protected:
    /// Waits for a report; an empty one after a time-out.
    PageReport wait_for_report(Kind kind, const std::string& message)
    {
        const auto found = [&] {
            return std::ranges::find_if(own.reports, [&](const PageReport& each) {
                return each.kind == kind && each.message.find(message) != std::string::npos;
            });
        };
        const bool came = platform.loop().run_until([&] { return found() != own.reports.end(); }, 90);
        EXPECT_TRUE(came) << "never reported: " << message << all();
        return came ? *found() : PageReport{};
    }

    std::string all() const
    {
        std::string lines;
        for (const PageReport& each : own.reports)
            lines += "\n  " + std::to_string(static_cast<int>(each.kind)) + " " + each.message;
        return lines;
    }

    void show(const std::string& html) { page->load_html(html, NSURL::URLWithString(server.base() + "page.html")); }

    ReportRecorder own;
    std::unique_ptr<WebEngine> page = factory.make_web_engine(own, PageKind::Creative);
};

TEST_F(PageReportsTest, EachLevelOfTheConsoleIsReportedWithFileAndLine)
{
    show("<script>\nconsole.debug('d');\nconsole.log('l', 1, true, null);\nconsole.info('i');\nconsole.warn('w');\n"
         "console.error('e');\nconsole.assert(1 > 2, 'sums');\nconsole.assert(2 > 1, 'never');</script>");

    const PageReport last = wait_for_report(Kind::Error, "sums");
    EXPECT_EQ(last.message, "Assertion failed sums");
    EXPECT_EQ(last.line, 7);
    const std::vector<std::pair<Kind, std::string>> expected{{Kind::Debug, "d"}, {Kind::Log, "l 1 true null"},
                                                             {Kind::Info, "i"},  {Kind::Warning, "w"},
                                                             {Kind::Error, "e"}, {Kind::Error, last.message}};
    ASSERT_EQ(own.reports.size(), expected.size()) << all();
    for (std::size_t n = 0; n < expected.size(); ++n) {
        EXPECT_EQ(own.reports[n].kind, expected[n].first);
        EXPECT_EQ(own.reports[n].message, expected[n].second);
        EXPECT_EQ(own.reports[n].file, server.base() + "page.html");
        EXPECT_EQ(own.reports[n].line, static_cast<std::int64_t>(n) + 2);
    }
}

TEST_F(PageReportsTest, ValuesAreDescribed)
{
    show("<p id='here'></p><script>console.log({a: [1, 'x'], get b() { throw 1; }}, new TypeError('no'), "
         "document.querySelector('p'), undefined, Symbol('s'), () => 1);"
         "console.log('%s of %d%% in %cblue', 'some', 12, 'color: blue', 'rest');"
         "console.log({a: {b: {c: 1}}}); console.log(); console.log('end');</script>");
    wait_for_report(Kind::Log, "end");

    ASSERT_EQ(own.reports.size(), 5U) << all();
    EXPECT_EQ(own.reports[0].message,
              R"({a: [1, "x"], b: …} TypeError: no <p id="here"> undefined Symbol(s) function)");
    EXPECT_EQ(own.reports[1].message, "some of 12% in blue rest");
    EXPECT_EQ(own.reports[2].message, "{a: {b: {…}}}");
    EXPECT_EQ(own.reports[3].message, "");
}

TEST_F(PageReportsTest, TheConsoleStillReturnsToThePage)
{
    show("<script>const proxy = new Proxy({}, {ownKeys() { throw 1; }});"
         "console.log(proxy); console.log('after ' + (console.log('x') === undefined));</script>");

    wait_for_report(Kind::Log, "after true");
}

TEST_F(PageReportsTest, AnUncaughtExceptionIsReportedWithItsPlace)
{
    show("<script>\n\nmissingFunction();</script>");

    const PageReport report = wait_for_report(Kind::Exception, "missingFunction");
    EXPECT_EQ(report.file, server.base() + "page.html");
    EXPECT_EQ(report.line, 3);
}

TEST_F(PageReportsTest, AnUncaughtExceptionOfAnEventIsReported)
{
    show("<script>setTimeout(() => { throw new RangeError('later'); });</script>");

    wait_for_report(Kind::Exception, "RangeError: later");
}

TEST_F(PageReportsTest, ARejectedPromiseIsReportedWithItsReason)
{
    show("<script>\nPromise.reject(new Error('promised'));\nPromise.reject('plain').catch(() => {});</script>");

    const PageReport report = wait_for_report(Kind::Rejection, "Error: promised");
    EXPECT_EQ(report.file, server.base() + "page.html");
    EXPECT_EQ(report.line, 2);
    EXPECT_EQ(std::ranges::count(own.reports, Kind::Rejection, &PageReport::kind), 1) << all();
}

TEST_F(PageReportsTest, AResourceThatDoesNotLoadIsReportedWithAddressAndStatus)
{
    server.pages["/there.js"] = {"text/javascript", "console.log('loaded')"};
    show("<img src='missing.png'><script src='there.js'></script><script>fetch('data.json')</script>");

    wait_for_report(Kind::Log, "loaded");
    const auto resource = [&](const std::string& name) {
        return std::ranges::find(own.reports, server.base() + name, &PageReport::file);
    };
    const auto both = [&] {
        return resource("missing.png") != own.reports.end() && resource("data.json") != own.reports.end();
    };
    ASSERT_TRUE(platform.loop().run_until(both, 90)) << all();
    EXPECT_EQ(resource("missing.png")->kind, Kind::Resource);
    EXPECT_EQ(resource("missing.png")->status, 404);
    EXPECT_EQ(resource("data.json")->status, 404);
    EXPECT_FALSE(resource("data.json")->line);
    EXPECT_EQ(std::ranges::count(own.reports, Kind::Resource, &PageReport::kind), 2) << all();
}

TEST_F(PageReportsTest, AScriptAndAStyleSheetThatDoNotLoadAreReported)
{
    show("<link rel='stylesheet' href='missing.css'><script src='missing.js'></script>"
         "<script type='module' src='module.js'></script>");

    for (const std::string name : {"missing.css", "missing.js", "module.js"}) {
        const auto found = [&] { return std::ranges::find(own.reports, server.base() + name, &PageReport::file); };
        ASSERT_TRUE(platform.loop().run_until([&] { return found() != own.reports.end(); }, 90)) << name << all();
        EXPECT_EQ(found()->kind, Kind::Resource);
        EXPECT_EQ(found()->status, 404);
    }
}

TEST_F(PageReportsTest, AFloodIsLimitedInThePagesProcess)
{
    show("<script>for (let n = 0; n < 100000; ++n) console.log(n);"
         "setTimeout(() => console.log('end'), 1000);</script>");

    const PageReport end = wait_for_report(Kind::Log, "end");
    EXPECT_LT(own.reports.size(), 2000U);
    std::int64_t times = 0;
    for (const PageReport& each : own.reports)
        times += each.times;
    EXPECT_EQ(times, 100001) << "each line is counted by one report";
    EXPECT_GT(end.times, 1);
}

} // namespace
} // namespace qoro::test
