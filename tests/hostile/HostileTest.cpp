#include "tests/hostile/HostileTest.h"

#include "Places.h"

#include <array>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace qoro::test
{

namespace
{

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// Pages of attacks. Those of the first folder are also tested on the web engine alone. If both folders have a page of
/// the same name, the second folder's is served.
const std::array<std::string, 2> Pages{QORO_SOURCE_DIR "/tests/desktop/web/hostile",
                                       QORO_SOURCE_DIR "/tests/hostile/pages"};

std::string content(const std::filesystem::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// Ratio (at least 1) by which the loaded machine is now slower than an idle one.
double slowness()
{
    constexpr Seconds Sample{0.05};
    const auto worked = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    };
    const auto begun = Clock::now();
    const double before = worked();
    while (worked() - before < Sample.count()) {
    }
    return std::max(1.0, Seconds(Clock::now() - begun) / Sample);
}

#ifdef __SANITIZE_ADDRESS__
/// The sanitizers slow the program down; these tests do not measure that.
constexpr double Second = 2;
#else
constexpr double Second = 1;
#endif

} // namespace

void HostileTest::SetUp()
{
    if (const char* why = std::getenv("QORO_NO_OWN_NETWORK"); why && *why)
        GTEST_SKIP() << why;
    // A small quarantine of freed memory keeps the resident size meaningful. Looking for leaks doubles the processor
    // time of a short run.
    setenv("ASAN_OPTIONS", "quarantine_size_mb=8:fast_unwind_on_malloc=1:detect_leaks=0", 1);
    internet_.emplace();
    for (const std::string& folder : Pages)
        for (const auto& page : std::filesystem::directory_iterator(folder))
            internet_->serve("/" + page.path().filename().string(),
                             {.body = content(page.path()),
                              .type = page.path().extension() == ".js" ? "text/javascript" : "text/html"});
    internet_->serve("/to-this-machine", {.status = 302, .head = "Location: http://127.0.0.1/secret\r\n"});
    internet_->serve("/secret", {.body = "a secret", .head = "Access-Control-Allow-Origin: *\r\n"});
}

void HostileTest::TearDown()
{
    memory_.reset();
    if (!HasFailure() || !ad_)
        return;
    std::string report;
    for (const nlohmann::json& line : ad_->trace())
        if (line["what"] == "web" || line["what"] == "mraid")
            report += line.dump() + "\n";
    ADD_FAILURE() << report;
}

void HostileTest::play(const std::string& page, const nlohmann::json& changes)
{
    nlohmann::json properties{{"strWebViewUrl", "http://" + std::string(Stranger) + "/" + page},
                              {"iCloseBtnCountdown", 0}};
    properties.update(changes);
    demo_.emplace(properties);
    ad_.emplace(std::vector<std::string>{demo_->file()});
    ASSERT_TRUE(ad_->reaches_second(1)) << ad_->complaints();
    memory_.emplace([this] { return ad_->processes(); });
}

bool HostileTest::page_is_done()
{
    return ad_->reports({{"what", "mraid"}, {"do", "refused"}, {"arguments", {"done"}}});
}

bool HostileTest::refused(const std::string& kind, const std::string& part)
{
    return ad_
        ->wait_for([&](const nlohmann::json& line) {
            return line["what"] == "web" && line.value("do", "") == "refused" &&
                   (kind.empty() || line.value("kind", "") == kind) &&
                   line.value("detail", "").find(part) != std::string::npos;
        })
        .is_object();
}

std::string HostileTest::spoken_to_others()
{
    std::string others;
    for (const std::string& one : internet_->contacted())
        if (one != std::string(Stranger) + ":80")
            others += one + " ";
    for (const std::string& one : internet_->asked())
        if (!one.starts_with(std::string(Stranger) + "/"))
            others += one + " ";
    return others;
}

void HostileTest::the_viewer_touches_close()
{
    ad_->click(25, 69);
}

void HostileTest::the_viewer_leaves_by_the_guard()
{
    ASSERT_TRUE(ad_->reports({{"what", "guard"}, {"do", "show"}}));
    ad_->click(351, 24);
    EXPECT_TRUE(ad_->reports({{"what", "guard"}, {"do", "close"}}));
    EXPECT_EQ(ad_->exit_status(), 0) << ad_->complaints();
    EXPECT_EQ(ad_->hits_of("/t/close"), 1);
}

void HostileTest::the_viewer_leaves()
{
    ASSERT_EQ(ad_->exit_status(0), -1) << "the program lives: " << ad_->complaints();
    const double before = slowness();
    const auto touched = Clock::now();
    the_viewer_touches_close();
    ASSERT_TRUE(ad_->hears("onhide"));
    const Seconds answer = Clock::now() - touched;
    EXPECT_LT(answer.count(), Second * std::max(before, slowness()));
    EXPECT_EQ(ad_->exit_status(), 0) << ad_->complaints();
    EXPECT_EQ(ad_->hits_of("/t/close"), 1);
}

} // namespace qoro::test
