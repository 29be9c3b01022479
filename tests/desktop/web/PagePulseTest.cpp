#include "tests/desktop/web/PageTest.h"

namespace qoro::test
{
namespace
{

/// The engine's check that a page's script still responds.
class PagePulseTest : public PageTest
{
protected:
    static constexpr const char* Hangs = "setTimeout(() => { note('hangs'); for (;;); }, 100);";

    /// Runs the main loop for some seconds.
    void run_for(double seconds)
    {
        platform.loop().run_until([] { return false; }, seconds);
    }
    void end_process() { webkit_web_view_terminate_web_process(web_view_of(*engine)); }
};

TEST_F(PagePulseTest, APageThatHangsIsReportedOnce)
{
    engine->watch_responsiveness(true);
    load_script(Hangs);
    wait_for("silent");
    run_for(2.5);
    EXPECT_EQ(recorder.count("silent"), 1);
    EXPECT_FALSE(recorder.has("answers"));
}

TEST_F(PagePulseTest, APageThatAnswersAgainIsReported)
{
    engine->watch_responsiveness(true);
    load_script("setTimeout(() => { for (const end = Date.now() + 5000; Date.now() < end;); note('free'); }, 100);");
    wait_for("silent");
    EXPECT_FALSE(recorder.has("note[\"free\"]"));
    wait_for("answers");
    EXPECT_EQ(recorder.count("silent"), 1);
    EXPECT_EQ(recorder.count("answers"), 1);
}

TEST_F(PagePulseTest, AnUnwatchedPageReportsNothing)
{
    load_script(Hangs);
    wait_for("note[\"hangs\"]");
    run_for(3);
    EXPECT_FALSE(recorder.has("silent"));
}

TEST_F(PagePulseTest, APageCountsAsAnsweringOnceItIsNoLongerWatched)
{
    engine->watch_responsiveness(true);
    load_script(Hangs);
    wait_for("silent");
    engine->watch_responsiveness(false);
    engine->watch_responsiveness(true);
    run_for(0.1);
    EXPECT_EQ(recorder.count("silent"), 1);
    EXPECT_TRUE(platform.loop().run_until([&] { return recorder.count("silent") == 2; }, 15)) << "it still hangs";
}

TEST_F(PagePulseTest, AnEndedPageAndItsSuccessorCountAsAnswering)
{
    engine->watch_responsiveness(true);
    load_script(Hangs);
    wait_for("silent");
    end_process();
    wait_for("died: the page's process was ended");
    run_for(2.5);
    EXPECT_EQ(recorder.count("silent"), 1) << "where there is no page, none is silent";
    load_script("note('second')");
    wait_for("note[\"second\"]");
    run_for(2.5);
    EXPECT_EQ(recorder.count("silent"), 1);
    EXPECT_FALSE(recorder.has("answers")) << "a new page answers without a report";
}

TEST_F(PagePulseTest, AnEngineCanBeDestroyedWhileAnAnswerIsPending)
{
    engine->watch_responsiveness(true);
    load_script(Hangs);
    wait_for("note[\"hangs\"]");
    run_for(1.2);
    engine.reset();
    run_for(1.5);
    EXPECT_FALSE(recorder.has("silent") && recorder.has("answers"));
}

} // namespace
} // namespace qoro::test
