#include "tests/desktop/web/PageTest.h"

namespace qoro::test
{
namespace
{

/// Features of the machine that must not be available to a page.
class PageSurroundingsTest : public PageTest
{
};

TEST_F(PageSurroundingsTest, FeaturesThatNoAdNeedsAreMissing)
{
    load_script("note(...['mediaSession', 'wakeLock', 'getGamepads', 'clipboard'].filter(n => n in navigator),"
                "  ...['speechSynthesis', 'SharedWorker'].filter(n => n in window),"
                "  ...['requestPointerLock', 'webkitRequestFullscreen'].filter(n => n in document.body),"
                "  Object.assign(document.createElement('input'), {type: 'color'}).type)");
    wait_for("finish");
    EXPECT_TRUE(recorder.has(R"(note["text"])")) << recorder.heard[1];
}

// They would end this program where WebKit draws without OpenGL: by a script, and by a rule of two pages' styles.
TEST_F(PageSurroundingsTest, ViewTransitionsAreMissing)
{
    load_script("note(...['startViewTransition'].filter(n => n in document),"
                "  ...['ViewTransition', 'CSSViewTransitionRule'].filter(n => n in window), 'none else')");
    wait_for("finish");
    EXPECT_TRUE(recorder.has(R"(note["none else"])")) << recorder.heard[1];
}

} // namespace
} // namespace qoro::test
