#include "Places.h"
#include "desktop/web/ProcessFacts.h"
#include "tests/desktop/web/PageTest.h"

#include <fstream>
#include <iostream>
#include <unistd.h>

namespace qoro::test
{
namespace
{

constexpr double Megabyte = 1024 * 1024;

std::string contents_of(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(QORO_SOURCE_DIR + path, std::ios::binary).rdbuf();
    return text.str();
}

/// The memory use of this program's largest page process, in megabytes.
double largest_page()
{
    double largest = 0;
    for_each_descendant(getpid(), [&](int process, const std::string& name) {
        if (name == "WebKitWebProces")
            largest = std::max(largest, static_cast<double>(own_memory(process).value_or(0)) / Megabyte);
    });
    return largest;
}

/// Shows a page from tests/desktop/web/hostile in a window.
class PageLimitsTest : public PageTest
{
protected:
    PageLimitsTest()
    {
        gtk_window_set_default_size(GTK_WINDOW(window_), 400, 300);
        show();
    }
    ~PageLimitsTest() override
    {
        gtk_window_set_child(GTK_WINDOW(window_), nullptr);
        gtk_window_destroy(GTK_WINDOW(window_));
    }

    void show()
    {
        gtk_window_set_child(GTK_WINDOW(window_), engine->widget_source()->widget());
        gtk_window_present(GTK_WINDOW(window_));
    }
    void hide() { gtk_window_set_child(GTK_WINDOW(window_), nullptr); }
    void load_hostile(const std::string& name)
    {
        std::string html = contents_of("/tests/desktop/web/hostile/" + name + ".html");
        const auto replace = [&](const std::string& what, const std::string& by) {
            if (const std::size_t at = html.find(what); at != std::string::npos)
                html.replace(at, what.size(), by);
        };
        replace("mraid.js", script_library_address);
        replace("VIDEO", server.base() + "clip.mp4");
        load(html);
    }
    bool died() const
    {
        return std::ranges::any_of(recorder.heard, [](const std::string& line) { return line.starts_with("died"); });
    }

private:
    GtkWidget* const window_ = gtk_window_new();
};

// ---------------------------------------------------------------------------------------------------------- memory

class PageDrainTest : public PageLimitsTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(PageDrainTest, IsEndedAtTheLimitAndTheNextPageLoads)
{
    server.pages["/clip.mp4"] = {"video/mp4", contents_of("/examples/demo/clip.mp4")};
    double peak = 0;
    load_hostile(GetParam());
    platform.loop().run_until(
        [&] {
            peak = std::max(peak, largest_page());
            return died();
        },
        90);
    std::cout << GetParam() << ": at most " << static_cast<int>(peak) << " MB\n";
    EXPECT_TRUE(recorder.has("died: the page's process used too much memory (limit 512 MB)") ||
                recorder.has("died: the page stored too much outside its process (limit 512 MB)"))
        << (recorder.heard.empty() ? "" : recorder.heard.back());
    EXPECT_LT(peak, 512 * 4) << "a second of overshoot";
    recorder.heard.clear();
    load_script("note('the next')");
    wait_for("note[\"the next\"]");
}

INSTANTIATE_TEST_SUITE_P(By, PageDrainTest, testing::Values("arrays", "workers", "canvas", "svg", "videos", "blobs"),
                         [](const auto& page) { return std::string(page.param); });

TEST_F(PageLimitsTest, APageWithinTheLimitIsNotEnded)
{
    load_script("const kept = new Float64Array(32 << 20).fill(1); note(kept.length)"); // 256 megabytes
    wait_for("note[33554432]");
    platform.loop().run_until([&] { return died(); }, 2);
    EXPECT_FALSE(died());
}

TEST_F(PageLimitsTest, AHostsOwnLimitApplies)
{
    WebKitEngineFactory strict(platform, {.memory = 200});
    hide();
    engine = strict.make_web_engine(recorder, PageKind::Creative);
    show();
    load_script("const kept = new Float64Array(32 << 20).fill(1); note(kept.length); for (;;);");
    wait_for("died: the page's process used too much memory (limit 200 MB)");
    hide();
    engine.reset();
}

TEST_F(PageLimitsTest, AClosedHangingPageLeavesNoBusyProcess)
{
    load_script("note('hangs'); for (;;);");
    wait_for("note[\"hangs\"]");
    platform.loop().run_until([] { return false; }, 0.5);
    // WebKit keeps a spare page process, which is idle: the busiest one hangs.
    int hangs = 0;
    double most_work = 0;
    for_each_descendant(getpid(), [&](int process, const std::string& name) {
        const double work = worked_seconds(process).value_or(0);
        if (name == "WebKitWebProces" && work > std::exchange(most_work, std::max(most_work, work)))
            hangs = process;
    });
    ASSERT_NE(hangs, 0);
    hide();
    engine.reset();
    EXPECT_TRUE(platform.loop().run_until([&] { return !own_memory(hangs); }, 8)) << "WebKit gives it ten seconds";
}

// ------------------------------------------------------------------------------------------------------------ floods

class PageFloodTest : public PageLimitsTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(PageFloodTest, BarelyRaisesThisProgramsMemory)
{
#ifdef __SANITIZE_ADDRESS__
    constexpr double Most = 64 + 256; // AddressSanitizer quarantines freed memory
#else
    constexpr double Most = 64;
#endif
    load("<p>quiet</p>");
    wait_for("finish");
    platform.loop().run_until([] { return false; }, 1);
    const double quiet = static_cast<double>(own_memory(getpid()).value_or(0));
    double most = quiet;
    double latest = 0;
    double due = platform.loop().now() + 0.01;
    const TimerId timer = platform.loop().start_timer(0.01, true, [&] {
        latest = std::max(latest, platform.loop().now() - due);
        due = platform.loop().now() + 0.01;
        most = std::max(most, static_cast<double>(own_memory(getpid()).value_or(0)));
    });
    recorder.heard.clear();
    load_hostile(GetParam());
    platform.loop().run_until([&] { return died(); }, 8);
    platform.loop().run_until([] { return false; }, 0.5);
    platform.loop().stop_timer(timer);
    std::cout << GetParam() << ": " << (most - quiet) / Megabyte << " MB more, an event at most " << latest * 1000
              << " ms late, " << recorder.heard.size() << " messages, " << recorder.refusals.size() << " refusals, "
              << (died() ? recorder.heard.back() : "alive") << "\n";
    EXPECT_LE((most - quiet) / Megabyte, Most);
}

INSTANTIATE_TEST_SUITE_P(By, PageFloodTest,
                         testing::Values("messages", "names", "titles", "history", "requests", "windows", "focus"),
                         [](const auto& page) { return std::string(page.param); });

} // namespace
} // namespace qoro::test
