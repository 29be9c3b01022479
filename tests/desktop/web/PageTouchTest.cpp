#include "tests/desktop/web/PageTest.h"

#include <gtest/gtest.h>

#include <optional>

// Touches of a page by steps.

namespace qoro::test
{
namespace
{

class PageTouchTest : public PageTest
{
protected:
    /// A page without a window has no size.
    PageTouchTest() : window_(GTK_WINDOW(gtk_window_new()))
    {
        gtk_window_set_default_size(window_, 400, 600);
        gtk_window_set_child(window_, engine->widget_source()->widget());
        gtk_window_present(window_);
    }
    ~PageTouchTest() override
    {
        gtk_window_set_child(window_, nullptr);
        gtk_window_destroy(window_);
    }

    /// Loads a page whose body precedes a script, and waits for its end.
    void show(const std::string& body, const std::string& script)
    {
        load("<!DOCTYPE html><html><head><script src='kit://script.js'></script></head><body style='margin: 0'>" +
             body + "<script>const note = (...args) => qoroBridge(JSON.stringify({command: 'note', args}), () => {});" +
             script +
             "; const ready = () => innerHeight > 0 ? note('ready') : requestAnimationFrame(ready); ready();"
             "</script></body></html>");
        wait_for("finish");
        wait_for(R"(note["ready"])");
    }

    std::string aim(CGPoint point)
    {
        std::optional<PageTouch> aimed;
        engine->aim_touch(point, [&](const PageTouch& touch) { aimed = touch; });
        EXPECT_TRUE(platform.loop().run_until([&] { return aimed.has_value(); }, 90));
        EXPECT_EQ(aimed ? aimed->point : CGPoint{}, point);
        return aimed ? aimed->element : "";
    }

    /// The centre of an element; absent without one.
    std::optional<CGPoint> find(const std::string& selector)
    {
        std::optional<PageTouch> place;
        bool found = false;
        engine->find_element(selector, [&](const std::optional<PageTouch>& element) {
            place = element;
            found = true;
        });
        EXPECT_TRUE(platform.loop().run_until([&] { return found; }, 90));
        return place ? std::optional(place->point) : std::nullopt;
    }

    void touch(const std::string& selector)
    {
        const std::optional<CGPoint> point = find(selector);
        ASSERT_TRUE(point) << selector;
        aim(*point);
        engine->touch_page();
    }

private:
    GtkWindow* const window_;
};

constexpr const char* Box = "style='position: absolute; left: 100px; top: 40px; width: 60px; height: 20px'";

TEST_F(PageTouchTest, AnElementIsNamedByItsIdOrElseItsTagAndFirstClass)
{
    show(std::string("<div class='a b' ") + Box + "></div><p id='yes' style='height: 20px; margin: 0'></p><i></i>", "");

    EXPECT_EQ(aim({120, 50}), "div.a");
    EXPECT_EQ(aim({10, 10}), "#yes");
    EXPECT_EQ(aim({10, 30}), "html");
}

TEST_F(PageTouchTest, ASelectorGivesTheCentreOfItsElement)
{
    show(std::string("<div ") + Box + "></div>", "");

    EXPECT_EQ(find("div"), (CGPoint{130, 50}));
    EXPECT_FALSE(find("#missing"));
    EXPECT_FALSE(find("no selector at all ["));
}

TEST_F(PageTouchTest, APageThatWasNeverLoadedHasNoElements)
{
    EXPECT_FALSE(find("html"));
    EXPECT_EQ(aim({1, 1}), "");
}

TEST_F(PageTouchTest, ATouchHasTheEventsOfAClickInTheirOrder)
{
    show(std::string("<button id='yes' ") + Box + "></button>",
         "let seen = [];"
         "for (const name of ['pointerdown', 'mousedown', 'focus', 'mouseup', 'pointerup', 'click'])"
         "  yes.addEventListener(name, () => { seen.push(name); if (name === 'click') note(...seen); });");

    touch("#yes");

    wait_for(R"(note["pointerdown","mousedown","focus","pointerup","mouseup","click"])");
}

TEST_F(PageTouchTest, EventsBubbleWithTheirPlace)
{
    show(std::string("<div id='yes' ") + Box + "></div>",
         "document.addEventListener('click', ({ target, clientX, clientY, pointerType, view }) =>"
         "  note(target.id, clientX, clientY, pointerType, view === window));");

    touch("#yes");

    wait_for(R"(note["yes",130,50,"mouse",true])");
}

TEST_F(PageTouchTest, ATouchRunsTheDefaultAction)
{
    show("<label for='box' id='text'>Agree</label><input type='checkbox' id='box'>"
         "<a id='link' href='#part' style='display: block; height: 20px'>there</a>",
         "box.addEventListener('change', () => note('checked', box.checked));"
         "addEventListener('hashchange', () => note('moved', location.hash));");
    recorder.allow_loads = true;

    touch("#text");
    wait_for(R"(note["checked",true])");
    touch("#link");
    wait_for(R"(note["moved","#part"])");
}

TEST_F(PageTouchTest, AnElementOutsideTheViewIsScrolledIntoIt)
{
    show("<div style='height: 5000px'></div><button id='low' style='height: 20px'>low</button>",
         "low.onclick = () => note('low');");

    touch("#low");

    wait_for(R"(note["low"])");
}

TEST_F(PageTouchTest, ATouchReachesWhatCoversTheElement)
{
    show(std::string("<button id='below' ") + Box + "></button><div id='above' " + Box + "></div>",
         "below.onclick = () => note('below'); above.onclick = () => note('above');");

    const std::optional<CGPoint> point = find("#below");
    ASSERT_TRUE(point);
    EXPECT_EQ(aim(*point), "#above");
    engine->touch_page();

    wait_for(R"(note["above"])");
    EXPECT_FALSE(recorder.has(R"(note["below"])"));
}

TEST_F(PageTouchTest, ATouchReachesAFrameThatThePageHasFilled)
{
    show("<iframe id='frame' style='position: absolute; left: 50px; top: 30px; border: 5px solid'></iframe>",
         "const inner = frame.contentDocument;"
         "inner.body.innerHTML = '<b id=\"deep\" style=\"position: absolute; left: 10px; top: 10px; width: 40px; "
         "height: "
         "20px\"></b>';"
         "inner.addEventListener('click', ({ target, clientX, clientY }) => note(target.id, clientX, clientY));");

    EXPECT_EQ(aim({75, 55}), "#deep");
    engine->touch_page();

    wait_for(R"(note["deep",20,20])");
}

TEST_F(PageTouchTest, ThePageCannotChangeTheTouch)
{
    show(std::string("<button id='yes' ") + Box + "></button>",
         "EventTarget.prototype.dispatchEvent = Document.prototype.elementFromPoint = Object.assign = () => null;"
         "window.PointerEvent = window.MouseEvent = null; yes.onclick = () => note('click');");

    touch("#yes");

    wait_for(R"(note["click"])");
}

TEST_F(PageTouchTest, ATouchActivatesThePageAsInputDoes)
{
    show(std::string("<button id='yes' ") + Box + "></button>",
         "yes.onclick = () => note(navigator.userActivation.isActive);");

    touch("#yes");

    wait_for("note[true]");
}

} // namespace
} // namespace qoro::test
