#include "kit/ControlRects.h"

#include "tests/support/AdSession.h"
#include "tests/support/ScenarioRun.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

#include <numbers>
#include <optional>

// Where the ad's controls lie over its page: on a phone of 375 × 812 points, the page below the sensor housing (44
// points) and above the home indicator (34 points).

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

struct Found {
    CGRect rect;
    bool visible;
    bool hittable;
};

class ControlRectsTest : public testing::Test
{
protected:
    explicit ControlRectsTest(ViewPosition position = FULL)
    {
        session.ad().strWebViewUrl = "http://ad/page.html";
        session.ad().portraitVideoPos = position;
        session.ad().landscapeModeType = VIDEO_AND_WEBVIEW;
        session.ad().bShowHideVideoBtn = false;
        session.ad().bIsHideFullPortraitVideoAtEnd = true;
        session.ad().bIsHideLandscapeVideoAtEnd = true;
        session.ad().iCloseBtnCountdown = 2;
        session.ad().strBackgroundColor = "4279704105";
        session.ad().strBrandText = "Lumo";
        session.open();
        session.plays();
    }

    NSArray list() { return session.script_says("getControlRects").value.array(); }
    std::optional<Found> control(std::string_view name)
    {
        for (const Value& entry : list()) {
            const NSDictionary record = entry.dictionary();
            const auto number = [&](std::string_view key) { return record[key].doubleValue(); };
            if (record["name"].string().text() == name)
                return Found{{number("x"), number("y"), number("width"), number("height")},
                             record["visible"].boolValue(),
                             record["hittable"].boolValue()};
        }
        return std::nullopt;
    }
    std::vector<std::string> changes() const
    {
        std::vector<std::string> found;
        for (const std::string& event : session.events())
            if (event.starts_with("controlschange"))
                found.push_back(event);
        return found;
    }
    void listen()
    {
        session.script_says("addEventListener", {"controlschange", "id"});
        session.let_pass(0.2);
        session.forget();
    }
    /// The device is held in landscape, and the ad follows.
    void turn()
    {
        session.rotate(UIDeviceOrientationLandscapeLeft);
        session.turn_status_bar(UIInterfaceOrientationLandscapeRight);
        session.let_pass(6);
    }
    /// The rectangle that the view tree gives a view, in the page's coordinates: its corners on the screen, turned back
    /// with the page.
    CGRect in_view_tree(const UIView& view)
    {
        const Placement page = placement_on_screen(*session->webView().node());
        const Placement own = placement_on_screen(*view.node());
        const bool turned = std::abs(page.angle - std::numbers::pi / 2) < 1e-6;
        EXPECT_TRUE(turned || page.angle == 0);
        const double dx = own.center.x - page.center.x;
        const double dy = own.center.y - page.center.y;
        const double x = page.bounds.width / 2 + (turned ? dy : dx);
        const double y = page.bounds.height / 2 + (turned ? -dx : dy);
        return {x - own.bounds.width / 2, y - own.bounds.height / 2, own.bounds.width, own.bounds.height};
    }
    void expect_as_in_view_tree(std::string_view name, const UIView& view)
    {
        const auto found = control(name);
        ASSERT_TRUE(found) << name;
        const CGRect tree = in_view_tree(view);
        EXPECT_NEAR(found->rect.x, tree.x, 1e-6) << name;
        EXPECT_NEAR(found->rect.y, tree.y, 1e-6) << name;
        EXPECT_NEAR(found->rect.width, tree.width, 1e-6) << name;
        EXPECT_NEAR(found->rect.height, tree.height, 1e-6) << name;
    }

    AdSession session;
};

TEST_F(ControlRectsTest, UprightTheCloseButtonIsAtThePagesCorner)
{
    session.let_pass(1.5); // the remaining time is known
    EXPECT_EQ(control("btnClose")->rect, (CGRect{0, 0, 50, 50}));
    EXPECT_EQ(control("btnPlayAndPause")->rect, (CGRect{162.5, 381, 50, 50}));
    expect_as_in_view_tree("btnClose", session->btnClose);
    expect_as_in_view_tree("btnPlayAndPause", session->btnPlayAndPause);
    expect_as_in_view_tree("labelRemainderTime", session->labelRemainderTime);
}

/// A band in the middle of the page, which fills the screen in landscape; a FULL video stays in portrait.
struct MiddleTest : ControlRectsTest {
    MiddleTest() : ControlRectsTest(MIDDLE) {}
};

TEST_F(MiddleTest, ControlsOnABandOverThePageAreListedWithTheBand)
{
    session.let_pass(1.5);

    // The band is 210.9375 points high, in the middle of 812; the page begins at 44.
    EXPECT_EQ(control("btnClose")->rect, (CGRect{0, 0, 50, 50}));
    EXPECT_NEAR(control("btnPlayAndPause")->rect.y, (812 - 50) / 2.0 - 44, 1e-3);
    expect_as_in_view_tree("btnMute", session->btnMute);
}

TEST_F(MiddleTest, TurnedTheyAreInThePagesOwnCoordinates)
{
    turn();

    // The video begins at the screen's edge, the page 44 points beside it.
    EXPECT_EQ(control("btnClose")->rect, (CGRect{-44, 0, 50, 50}));
    for (const auto& [name, view] : {std::pair<std::string_view, UIView>("btnClose", session->btnClose),
                                     {"btnMute", session->btnMute},
                                     {"btnPlayAndPause", session->btnPlayAndPause},
                                     {"labelBrandText", session->labelBrandText},
                                     {"labelRemainderTime", session->labelRemainderTime}})
        expect_as_in_view_tree(name, view);
}

TEST_F(ControlRectsTest, OnAnEndCardTheCloseButtonIsOnThePageAndTheOthersAreNotSeen)
{
    session.let_pass(3);
    session.ends();
    session.let_pass(0.2);

    const auto close = control("btnClose");
    ASSERT_TRUE(close);
    EXPECT_EQ(close->rect, (CGRect{0, 0, 50, 50}));
    EXPECT_TRUE(close->visible);
    EXPECT_TRUE(close->hittable);
    for (const Value& entry : list())
        if (entry.dictionary()["name"].string().text() != "btnClose") {
            EXPECT_FALSE(entry.dictionary()["visible"].boolValue()) << as_text(entry);
            EXPECT_FALSE(entry.dictionary()["hittable"].boolValue()) << as_text(entry);
        }
}

TEST_F(ControlRectsTest, AButtonThatIsStillToComeIsListedAsNotVisible)
{
    ASSERT_TRUE(session->btnClose.isHidden());

    EXPECT_FALSE(control("btnClose")->visible);
    EXPECT_FALSE(control("btnClose")->hittable);
    session.let_pass(2.5);
    EXPECT_TRUE(control("btnClose")->visible);
    EXPECT_TRUE(control("btnClose")->hittable);
}

TEST_F(ControlRectsTest, ATextIsVisibleButReceivesNoTouch)
{
    session.let_pass(1);

    EXPECT_TRUE(control("labelRemainderTime")->visible);
    EXPECT_FALSE(control("labelRemainderTime")->hittable);
}

TEST_F(MiddleTest, TheBrandTextIsShownInLandscapeOnly)
{
    ASSERT_TRUE(control("labelBrandText"));
    EXPECT_FALSE(control("labelBrandText")->visible);
    turn();
    session.tap(session->btnClickListener); // shows the bars
    EXPECT_TRUE(control("labelBrandText")->visible);
}

TEST_F(ControlRectsTest, AShrunkPageIsMeasuredInItsOwnPixels)
{
    struct Shrunk final : WebEngine {
        void load_html(const NSString&, const NSURL&) override {}
        void load_address(const NSURL&) override {}
        void go_back() override {}
        void go_forward() override {}
        void reload() override {}
        PageState page_state() const override { return {}; }
        void call_listeners(const std::string&, const NSArray&, const NSDictionary&) override {}
        NSURL current_address() const override { return {}; }
        void set_scales_page_to_fit(bool) override {}
        double page_scale() const override { return 0.5; }
    };
    session->webView().node()->web = std::make_unique<Shrunk>();

    EXPECT_EQ(control("btnPlayAndPause")->rect, (CGRect{325, 762, 100, 100}));
}

TEST_F(ControlRectsTest, AListenerReceivesThePresentPlacesOnce)
{
    session.forget();

    session.script_says("addEventListener", {"controlschange", "id"});
    session.let_pass(0.05);

    ASSERT_EQ(changes().size(), 1U);
    EXPECT_EQ(changes()[0], "controlschange {\"e\":{\"controls\":" + as_text(Value(list())) + "}}");
}

TEST_F(MiddleTest, NothingIsSentWithoutAListener)
{
    session.forget();

    turn();

    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(MiddleTest, ATurnIsReported)
{
    listen();

    turn();

    ASSERT_FALSE(changes().empty());
    EXPECT_EQ(control("btnClose")->rect.x, -44);
    EXPECT_EQ(changes().back(), "controlschange {\"e\":{\"controls\":" + as_text(Value(list())) + "}}");
}

TEST_F(ControlRectsTest, BarsThatHideThemselvesAreReported)
{
    session.let_pass(1);
    listen();
    ASSERT_TRUE(control("btnPlayAndPause")->visible);

    session.let_pass(3);

    EXPECT_FALSE(control("btnPlayAndPause")->visible);
    EXPECT_EQ(changes().back(), "controlschange {\"e\":{\"controls\":" + as_text(Value(list())) + "}}");
}

TEST_F(ControlRectsTest, AChangeOfSomethingElseIsNotReported)
{
    session.let_pass(10);
    listen();

    session->webView().node()->changed();
    session.let_pass(0.5);

    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ControlRectsTest, ManyChangesAreReportedTenTimesASecondAndTheLastIsNotLost)
{
    session.let_pass(10);
    listen();

    for (int i = 0; i < 200; ++i) {
        session->btnClose.setFrame({0, static_cast<double>(i), 50, 50});
        session.let_pass(0.005);
    }
    session.let_pass(0.2);

    EXPECT_LE(changes().size(), 12U);
    EXPECT_GE(changes().size(), 9U);
    EXPECT_EQ(control("btnClose")->rect.y, 199);
    EXPECT_EQ(changes().back(), "controlschange {\"e\":{\"controls\":" + as_text(Value(list())) + "}}");
}

TEST_F(MiddleTest, ARemovedListenerEndsTheWatch)
{
    listen();
    session.script_says("removeEventListener", {"controlschange", "id"});
    session.let_pass(1);
    session.forget();

    turn();

    EXPECT_THAT(changes(), IsEmpty());
}

TEST_F(ControlRectsTest, TheCloseOfTheAdEndsTheWatch)
{
    listen();

    session.script_says("MRAIDClose");
    session.let_pass(1);

    EXPECT_THAT(changes(), IsEmpty());
    EXPECT_EQ(session.script_says("getControlRects").error.text(), "the ad has closed");
}

struct BandTest : ControlRectsTest {
    BandTest() : ControlRectsTest(TOP) {}
};

TEST_F(BandTest, ControlsOnAVideoBesideThePageAreNotListed)
{
    session.let_pass(3);

    for (const Value& entry : list())
        EXPECT_FALSE(entry.dictionary()["visible"].boolValue()) << as_text(entry);
}

TEST(ControlRectsOfTheGuard, TheGuardsButtonIsListedWhileItIsShown)
{
    HostSetup host = unguarded_host();
    host.guard = CloseGuardTimes{};
    AdSession session(AdSession::manual_world(), host);
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.ad().portraitVideoPos = FULL;
    session.open();
    session.plays();
    const auto names = [&] { return as_text(session.script_says("getControlRects").value); };
    EXPECT_THAT(names(), testing::Not(testing::HasSubstr("closeGuard")));

    session.script_says("addEventListener", {"onclick_closebtn", 1});
    session.let_pass(6);
    session.tap(session->btnClose);
    session.let_pass(2);

    EXPECT_THAT(names(), testing::HasSubstr(R"({"name":"closeGuard","x":327,"y":-44,"width":48,"height":48,)"
                                            R"("visible":true,"hittable":true})"));
}

TEST(ControlRectsStep, AScenarioReadsThem)
{
    const auto trace = test::manual_run(R"({"open": 0}, {"script": ["getControlRects"]})");

    EXPECT_EQ(test::of_kind(trace, "return").size(), 1U);
    EXPECT_THAT(test::of_kind(trace, "return")[0], testing::HasSubstr(R"("command":"getControlRects","value":[)"));
}

} // namespace
} // namespace qoro
