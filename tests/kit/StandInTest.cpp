#include "kit/StandIn.h"

#include "platform/QoroAdManager.h"
#include "platform/QoroAppStoreMockViewController.h"
#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr CGPoint Close{355, 20};

struct StandInTest : testing::Test {
    StandInTest()
    {
        ad.setWindowLevel(UIWindowLevelStatusBar + 1);
        ad.makeKeyAndVisible();
    }

    /// The texts on the topmost window, from bottom to top.
    std::vector<std::string> texts_on_top()
    {
        std::vector<std::string> texts;
        collect(UIView(platform.shared<WindowList>().visible_from_below().back()), texts);
        return texts;
    }
    void collect(const UIView& view, std::vector<std::string>& texts)
    {
        if (view.isHidden())
            return;
        if (view.node()->kind == ViewNode::Kind::Label && view.node()->text.length() > 0)
            texts.push_back(view.node()->text.text());
        for (const UIView& subview : view.subviews())
            collect(subview, texts);
    }

    test::RecordingPlatform platform;
    UIWindow ad = UIWindow::create({0, 0, 375, 812});
    int closes = 0;
};

TEST_F(StandInTest, ACalendarsShowsTheEventOverTheAdUntilTheViewerClosesIt)
{
    const std::string event = "BEGIN:VCALENDAR\r\nBEGIN:VTIMEZONE\r\nTZID:x\r\nEND:VTIMEZONE\r\nBEGIN:VEVENT\r\n"
                              "SUMMARY:A long\r\n er title\r\nLOCATION:Hall 3\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
    show_calendar_stand_in(platform, event);

    EXPECT_THAT(texts_on_top(), ElementsAre("SUMMARY:A longer title\nLOCATION:Hall 3\n", "Calendar"));
    EXPECT_THAT(platform.transcript, Contains("kit do=handOver to=calendar text=" + event));
    EXPECT_TRUE(ad.isKeyWindow());
    EXPECT_FALSE(platform.web) << "a text needs no web engine";

    touch(platform, Close);
    EXPECT_THAT(texts_on_top(), IsEmpty());
}

TEST_F(StandInTest, AComposersShowsNumberAndTextAndReportsThatTheViewerIsBack)
{
    show_address_stand_in(platform, NSURL::URLWithString("sms:+15551234?body=Hi%20%26%20bye"), [this] { ++closes; });

    EXPECT_THAT(texts_on_top(), ElementsAre("+15551234\n\nHi & bye", "Message"));
    EXPECT_THAT(platform.transcript, Contains("kit do=handOver to=composer text=sms:+15551234?body=Hi%20%26%20bye"));
    EXPECT_EQ(closes, 0);

    touch(platform, Close);
    EXPECT_EQ(closes, 1);
    EXPECT_THAT(texts_on_top(), IsEmpty());
}

TEST_F(StandInTest, AStoresShowsTheAddress)
{
    show_address_stand_in(platform, NSURL::URLWithString("appstream://org.example.App"), nullptr);

    EXPECT_THAT(texts_on_top(), ElementsAre("appstream://org.example.App", "Store"));
    EXPECT_THAT(platform.transcript, Contains("kit do=handOver to=store text=appstream://org.example.App"));
    touch(platform, Close);
    EXPECT_THAT(texts_on_top(), IsEmpty());
}

TEST_F(StandInTest, WithoutStorePagesAStoresScreenShowsTheItem)
{
    QoroAdManager::sharedInstance().set_store_page("");

    const auto page = QoroAppStoreMockViewController::initWithStoreId("4711", "c", nullptr, "x y");
    ad.addSubview(page->view());

    EXPECT_THAT(texts_on_top(), ElementsAre("id: 4711\ncampaign: c\nadProvider: x y", "Store"));
    EXPECT_THAT(platform.transcript, Contains("kit do=handOver to=store text=id: 4711\ncampaign: c\nadProvider: x y"));
    EXPECT_FALSE(platform.web);
}

TEST_F(StandInTest, TheKeyThatLeavesAScreenLeavesIt)
{
    show_address_stand_in(platform, NSURL::URLWithString("sms:1"), [this] { ++closes; });

    const auto screen = PageScreen::topmost(platform);
    ASSERT_TRUE(screen);
    screen->close();

    EXPECT_EQ(closes, 1);
    EXPECT_FALSE(PageScreen::topmost(platform));
}

TEST_F(StandInTest, SeveralAreClosedEachByItself)
{
    show_address_stand_in(platform, NSURL::URLWithString("sms:1"), [this] { ++closes; });
    show_address_stand_in(platform, NSURL::URLWithString("sms:2"), [this] { ++closes; });
    EXPECT_THAT(texts_on_top(), ElementsAre("2", "Message"));
    touch(platform, Close);
    EXPECT_THAT(texts_on_top(), ElementsAre("1", "Message"));
    remove_stand_ins(platform);
    EXPECT_THAT(texts_on_top(), IsEmpty());
    EXPECT_EQ(closes, 1);
}

} // namespace
} // namespace qoro
