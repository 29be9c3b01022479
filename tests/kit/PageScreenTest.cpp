#include "kit/PageScreen.h"

#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

using Texts = std::vector<std::string>;
using Bar = PageScreen::Bar;

constexpr CGPoint Back{20, 20};
constexpr CGPoint Forward{70, 20};
constexpr CGPoint Address{200, 20};
constexpr CGPoint Reload{300, 20};
constexpr CGPoint Close{355, 20};
constexpr CGPoint Page{187, 400};

NSURL url(const char* text)
{
    return NSURL::URLWithString(text);
}

/// A page screen on a phone, alone in its window.
struct PageScreenTest : testing::Test {
    PageScreenTest() { window.makeKeyAndVisible(); }

    void open(const PageScreen::Style& style)
    {
        window.addSubview(filled);
        screen = PageScreen::create(filled, style, [this] { ++closes; });
    }
    void touch_at(CGPoint point) { touch(platform, point); }
    ViewNode::Kind kind_at(CGPoint point) { return hit_test(platform, point)->kind; }
    void turn_to(int device_orientation)
    {
        platform.device_orientation = device_orientation;
        platform.device_orientation_changed();
    }
    /// Reports the page's current state.
    void page_is(const PageState& state)
    {
        platform.web->state = state;
        platform.web->listener->page_state_changed();
    }
    /// The text of every visible label, bottom to top.
    Texts texts() const { return texts_in(window); }
    CGRect frame_of(ViewNode::Kind kind) const
    {
        CGRect found;
        walk(window, [&](const ViewNode& node) {
            if (node.kind == kind)
                found = node.frame;
        });
        return found;
    }
    Symbol symbol_at(CGPoint point) { return hit_test(platform, point)->symbol; }
    bool shows(Symbol symbol) const
    {
        bool found = false;
        walk(window, [&](const ViewNode& node) { found = found || node.symbol == symbol; });
        return found;
    }
    /// Length of the progress line in points; 0 for none.
    double progress() const
    {
        double length = 0;
        walk(window, [&](const ViewNode& node) {
            if (node.bounds.height == 3)
                length = node.bounds.width;
        });
        return length;
    }

    static void walk(const UIView& view, const std::function<void(const ViewNode&)>& see)
    {
        if (view.isHidden())
            return;
        see(*view.node());
        for (const UIView& subview : view.subviews())
            walk(subview, see);
    }
    static Texts texts_in(const UIView& view)
    {
        Texts texts;
        walk(view, [&](const ViewNode& node) {
            if (node.kind == ViewNode::Kind::Label && node.text.length() > 0)
                texts.push_back(node.text.text());
        });
        return texts;
    }
    static UIView sized(double width, double height)
    {
        const UIView view = UIView::create();
        view.setFrame({0, 0, width, height});
        return view;
    }

    test::RecordingPlatform platform;
    UIWindow window = UIWindow::create({0, 0, 375, 812});
    UIView filled = sized(375, 812);
    std::shared_ptr<PageScreen> screen;
    int closes = 0;
};

// ---------------------------------------------------------------------------------------------------------------- page

TEST_F(PageScreenTest, APageIsOfTheBrowsedKindAndReportsNothing)
{
    open({});

    screen->show_address(url("http://shop.example/"));

    EXPECT_EQ(platform.web->kind, PageKind::Browsed);
    EXPECT_EQ(platform.web->address.absoluteString(), "http://shop.example/");
    EXPECT_TRUE(platform.transcript.empty());
}

TEST_F(PageScreenTest, AnAddressThatIsNotOfTheWebShowsAnErrorInsteadOfLoading)
{
    open({});

    screen->show_address(url("file:///etc/passwd"));

    EXPECT_FALSE(platform.web->address);
    EXPECT_EQ(texts(), Texts{"There is nothing that can be shown here."});
}

TEST_F(PageScreenTest, AFailedPageShowsAnErrorUntilOneLoads)
{
    open({});
    screen->show_address(url("http://gone.example/"));

    platform.web->listener->did_fail_load("no such host");
    EXPECT_EQ(texts(), Texts{"This page could not be loaded."});

    platform.web->listener->did_finish_load();
    EXPECT_EQ(texts(), Texts{});
}

TEST_F(PageScreenTest, AFailedLinkLeavesThePage)
{
    open({});
    page_is({.has_content = true});

    platform.web->listener->did_fail_load("no such host");

    EXPECT_EQ(texts(), Texts{});
}

TEST_F(PageScreenTest, APageWhoseProcessEndsShowsAnError)
{
    open({});

    platform.web->listener->died("crashed");

    EXPECT_EQ(texts(), Texts{"This page has stopped working."});
}

TEST_F(PageScreenTest, TheBackgroundIsVisibleUntilThePageLoads)
{
    open({});
    bool opaque = true;
    const auto look = [&] {
        walk(window, [&](const ViewNode& node) {
            if (node.kind == ViewNode::Kind::WebView)
                opaque = node.opaque;
        });
        return opaque;
    };

    EXPECT_FALSE(look());
    page_is({.has_content = true});
    EXPECT_TRUE(look());
}

TEST_F(PageScreenTest, FollowedLinksToOtherProgramsArePassedToTheSystemAndNeverLoaded)
{
    open({});
    WebListener& listener = *platform.web->listener;

    EXPECT_FALSE(listener.should_start_load(url("tel:+123"), 0));
    EXPECT_FALSE(listener.should_start_load(url("sms:+123"), 0));
    EXPECT_FALSE(listener.should_start_load(url("mailto:a@b.example"), 0));

    EXPECT_EQ(platform.opened, (Texts{"tel:+123", "sms:+123", "mailto:a@b.example"}));
    EXPECT_EQ(platform.transcript.front(), "kit do=page.handOn url=tel:+123");
}

TEST_F(PageScreenTest, UnpromptedNavigationToOtherProgramsIsIgnored)
{
    open({});
    WebListener& listener = *platform.web->listener;

    EXPECT_FALSE(listener.should_start_load(url("tel:+123"), 5));
    EXPECT_FALSE(listener.should_start_load(url("market://details"), 5));

    EXPECT_EQ(platform.opened, Texts{});
}

TEST_F(PageScreenTest, FilesAndEngineInternalAddressesAreIgnored)
{
    open({});
    WebListener& listener = *platform.web->listener;

    EXPECT_FALSE(listener.should_start_load(url("file:///etc/passwd"), 0));
    EXPECT_FALSE(listener.should_start_load(url("FILE:///etc/passwd"), 0));
    EXPECT_FALSE(listener.should_start_load(url("javascript:1"), 0));
    EXPECT_FALSE(listener.should_start_load(url("data:text/html,x"), 0));
    EXPECT_FALSE(listener.should_start_load(url("kit://script.js"), 0));

    EXPECT_EQ(platform.opened, Texts{});
}

TEST_F(PageScreenTest, WebAddressesAndInlineFramesAreLoaded)
{
    open({});
    WebListener& listener = *platform.web->listener;

    EXPECT_TRUE(listener.should_start_load(url("http://a.example/"), 0));
    EXPECT_TRUE(listener.should_start_load(url("HTTPS://a.example/"), 5));
    EXPECT_TRUE(listener.should_start_load(url("blob:https://a.example/1"), 5));
    EXPECT_TRUE(listener.should_start_load(url("data:text/html,x"), 5));
}

// ------------------------------------------------------------------------------------------------------------ bars

TEST_F(PageScreenTest, WithoutABarThePageFillsTheScreenUnderTheCloseButton)
{
    open({});

    EXPECT_EQ(frame_of(ViewNode::Kind::WebView), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(symbol_at(Close), Symbol::CloseOnDisc);
    EXPECT_EQ(kind_at(Page), ViewNode::Kind::WebView);

    touch_at(Close);
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, APageThatDrawsItsOwnCloseButtonIsClosedInTheSameCorner)
{
    open({.close_unseen = true});

    EXPECT_EQ(symbol_at(Close), Symbol::Blank);
    EXPECT_EQ(kind_at({324, 10}), ViewNode::Kind::WebView);
    EXPECT_EQ(kind_at({350, 51}), ViewNode::Kind::WebView);

    touch_at({325, 49});
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, TheNavigationBarGoesBackForwardReloadsAndCloses)
{
    open({.bar = Bar::Navigation});
    page_is({.can_go_back = true, .can_go_forward = true});

    touch_at(Back);
    touch_at(Forward);
    touch_at(Reload);
    EXPECT_EQ(platform.web->calls, (Texts{"back", "forward", "reload"}));
    EXPECT_EQ(frame_of(ViewNode::Kind::WebView), (CGRect{0, 48, 375, 764}));

    touch_at(Close);
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, WithoutHistoryBackAndForwardDoNothing)
{
    open({.bar = Bar::Navigation});

    touch_at(Back);
    touch_at(Forward);

    EXPECT_EQ(platform.web->calls, Texts{});
}

TEST_F(PageScreenTest, TheNavigationBarShowsTheAddressAndWhetherItIsSafe)
{
    open({.bar = Bar::Navigation});
    EXPECT_FALSE(shows(Symbol::Lock) || shows(Symbol::OpenLock));

    page_is({.address = url("https://shop.example/"), .secure = true, .has_content = true});
    EXPECT_EQ(texts(), Texts{"shop.example"});
    EXPECT_TRUE(shows(Symbol::Lock));

    page_is({.address = url("http://shop.example/"), .has_content = true});
    EXPECT_TRUE(shows(Symbol::OpenLock));
    EXPECT_FALSE(shows(Symbol::Lock));
}

TEST_F(PageScreenTest, ATooLongHostIsCutAtItsStart)
{
    open({.bar = Bar::Navigation});
    int cut = 0;
    const auto look = [&] {
        walk(window, [&](const ViewNode& node) {
            if (node.kind == ViewNode::Kind::Label && node.text)
                cut = node.line_break_mode;
        });
        return cut;
    };

    page_is({.address = url("http://shop.example/a/long/way/to/the/lamps")});
    EXPECT_EQ(texts(), Texts{"shop.example/a/long/way/to/the/lamps"});
    EXPECT_EQ(look(), 4) << "cut at its end";

    page_is({.address = url("http://www.bank.example.evil.example/login")});
    EXPECT_EQ(texts(), Texts{"www.bank.example.evil.example"});
    EXPECT_EQ(look(), 3) << "cut at its start";
}

TEST_F(PageScreenTest, EveryButtonIsLargeEnoughForAFinger)
{
    open({.bar = Bar::Navigation});
    page_is({.can_go_back = true, .can_go_forward = true});

    EXPECT_EQ(hit_test(platform, Back)->frame, (CGRect{0, 0, 48, 48}));
    EXPECT_EQ(hit_test(platform, Forward)->frame, (CGRect{48, 0, 48, 48}));
    EXPECT_EQ(hit_test(platform, Reload)->frame, (CGRect{279, 0, 48, 48}));
    EXPECT_EQ(hit_test(platform, Close)->frame, (CGRect{327, 0, 48, 48}));
    EXPECT_EQ(hit_test(platform, Address)->frame, (CGRect{102, 7, 171, 34}));
}

TEST_F(PageScreenTest, TheTitleBarShowsThePagesTitle)
{
    open({.bar = Bar::Title});
    EXPECT_EQ(texts(), Texts{"Store"});

    page_is({.title = "Lamps"});
    EXPECT_EQ(texts(), Texts{"Lamps"});

    touch_at(Close);
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, TheProgressLineGrowsWhileLoading)
{
    open({.progress = true});
    EXPECT_EQ(progress(), 0);

    screen->show_address(url("http://shop.example/"));
    EXPECT_EQ(progress(), 18.75);
    page_is({.progress = 0.5});
    EXPECT_EQ(progress(), 187.5);
    platform.web->listener->did_finish_load();
    EXPECT_EQ(progress(), 0);
}

TEST_F(PageScreenTest, TheProgressLineIsOptional)
{
    open({});

    screen->show_address(url("http://shop.example/"));

    EXPECT_EQ(progress(), 0);
}

// -------------------------------------------------------------------------------------------------------------- device

TEST_F(PageScreenTest, TurnedSidewaysItIsUprightAndClosesInTheViewersCorner)
{
    open({.bar = Bar::Navigation});

    turn_to(UIDeviceOrientationLandscapeLeft);

    // The viewer's upper right is the screen's lower right.
    EXPECT_EQ(symbol_at({355, 792}), Symbol::Close);
    EXPECT_EQ(hit_test(platform, {100, 400})->bounds, (CGSize{812, 327}));
    touch_at({355, 792});
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, TurnedToTheOtherSideItIsUprightToo)
{
    open({});

    turn_to(UIDeviceOrientationLandscapeRight);

    // The viewer's upper right is the screen's upper left.
    touch_at({20, 20});
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, OpenedSidewaysAndLaidFlatItStaysAsItWas)
{
    platform.device_orientation = UIDeviceOrientationLandscapeLeft;
    open({});

    turn_to(UIDeviceOrientationFaceUp);

    touch_at({355, 792});
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, AHostInLandscapeKeepsItUpright)
{
    platform.device_facts.screen = CGSize{812, 375};
    window.setFrame({0, 0, 812, 375});
    filled.setFrame({0, 0, 812, 375});
    platform.bar_orientation = UIInterfaceOrientationLandscapeRight;
    open({});

    touch_at({792, 20});
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, ItFillsAViewThatGrows)
{
    open({});

    filled.setFrame({0, 255, 375, 557});

    EXPECT_EQ(frame_of(ViewNode::Kind::WebView), (CGRect{0, 0, 375, 557}));
    touch_at({355, 275});
    EXPECT_EQ(closes, 1);
}

TEST_F(PageScreenTest, ItContinuesInAnotherWindow)
{
    open({});
    const UIWindow other = UIWindow::create({0, 0, 375, 812});
    other.makeKeyAndVisible();

    other.addSubview(filled);
    touch_at(Close);

    EXPECT_EQ(closes, 1);
}

// ------------------------------------------------------------------------------------------------------------ close

TEST_F(PageScreenTest, ItsDestructionEmptiesTheViewAndSilencesThePage)
{
    open({});

    const Object* gone = screen.get();
    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(gone), 2U);

    screen = nullptr;
    turn_to(UIDeviceOrientationLandscapeLeft);
    filled.setFrame({0, 0, 10, 10});

    EXPECT_TRUE(filled.subviews().empty());
    EXPECT_EQ(NSNotificationCenter::defaultCenter().count_of(gone), 0U);
    EXPECT_EQ(platform.web, nullptr);
}

TEST_F(PageScreenTest, TheTopmostIsTheLatestVisibleOne)
{
    EXPECT_EQ(PageScreen::topmost(platform), nullptr);
    open({});
    const UIView over = sized(375, 812);
    const auto upper = PageScreen::create(over, {}, [] {});
    EXPECT_EQ(PageScreen::topmost(platform), screen) << "the upper one stands in no window";

    window.addSubview(over);
    EXPECT_EQ(PageScreen::topmost(platform), upper);
    over.setHidden(true);
    EXPECT_EQ(PageScreen::topmost(platform), screen);
    window.setHidden(true);
    EXPECT_EQ(PageScreen::topmost(platform), nullptr);
}

} // namespace
} // namespace qoro
