#include "kit/PageScreen.h"
#include "platform/QoroAppStoreMockViewController.h"
#include "platform/QoroInAppWebViewController.h"
#include "platform/QoroPhoneGapViewController.h"
#include "platform/ZulixOpenInAppApplicationViewController.h"
#include "tests/support/RecordingPlatform.h"
#include "tests/support/Views.h"
#include "views/ViewNode.h"

#include <gtest/gtest.h>

namespace qoro
{
namespace
{

using Texts = std::vector<std::string>;

/// The ad controller that opens the screens.
struct Opener : QoroPhoneGapViewController {
    void closeInAppWebView() override { ++browsers_closed; }
    void closeInAppApplication() override { ++applications_closed; }

    int browsers_closed = 0;
    int applications_closed = 0;
};

struct StoreDelegate : Object, QoroAppStoreMockViewControllerDelegate {
    void didDismissStoreViewController(const std::shared_ptr<QoroAppStoreMockViewController>& page) override
    {
        dismissed = page;
    }
    std::shared_ptr<QoroAppStoreMockViewController> dismissed;
};

struct ScreensTest : testing::Test {
    test::RecordingPlatform platform;
    std::shared_ptr<Opener> opener = std::make_shared<Opener>();
};

// ------------------------------------------------------------------------------------------------------------ browser

TEST_F(ScreensTest, ABrowserReportsItsSettings)
{
    const auto browser = QoroInAppWebViewController::create();
    browser->setBIsUseNavigationBar(true);
    browser->setSessionId(12.5);
    browser->setSeqNo(7);

    browser->expand("http://shop/", nullptr, true, 812, 375, opener, UIColor::blackColor());

    EXPECT_EQ(platform.transcript,
              (Texts{"kit do=browser.create",
                     "kit do=browser.expand url=http://shop/ customClose=true navBar=true progressBar=false height=812 "
                     "width=375 background=[0,0,0,1] session=12.5 sequence=7"}));
}

TEST_F(ScreensTest, ABrowserCoversTheAdInTheAdsWindow)
{
    opener->windowTempWindow = UIWindow::create({0, 0, 375, 812});
    const auto browser = QoroInAppWebViewController::create();

    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());

    EXPECT_EQ(browser->view().superview(), opener->windowTempWindow);
    EXPECT_EQ(browser->view().frame(), (CGRect{0, 0, 375, 812}));
}

TEST_F(ScreensTest, ABrowserClosedByTheViewerNotifiesItsOpener)
{
    const auto browser = QoroInAppWebViewController::create();
    QoroAdManager::sharedInstance().addExtraView(browser);
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor::blackColor());
    platform.transcript.clear();

    browser->closed_by_viewer();

    EXPECT_EQ(opener->browsers_closed, 1);
    EXPECT_FALSE(browser->view().superview());
    EXPECT_EQ(QoroAdManager::sharedInstance().extra_view_count(), 0U);
    EXPECT_TRUE(platform.transcript.empty());
}

TEST_F(ScreensTest, ABrowserClosedByTheAdNotifiesNoOpener)
{
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor::blackColor());
    platform.transcript.clear();

    browser->closeAction();

    EXPECT_EQ(opener->browsers_closed, 0);
    EXPECT_EQ(platform.transcript, Texts{"kit do=browser.close"});
}

TEST_F(ScreensTest, ABrowserWhoseAdIsDestroyedNotifiesNoOpener)
{
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor::blackColor());

    browser->removeParentViewController();
    browser->closed_by_viewer();

    EXPECT_EQ(opener->browsers_closed, 0);
}

TEST_F(ScreensTest, ABrowserLoadsItsPageWithoutAnEvent)
{
    const auto browser = QoroInAppWebViewController::create();
    platform.transcript.clear();

    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());

    EXPECT_EQ(platform.web->address.absoluteString(), "http://shop/");
    EXPECT_EQ(platform.transcript.size(), 1U) << "the expansion alone";
}

TEST_F(ScreensTest, ABrowserShowsAGivenPageInsteadOfAnAddress)
{
    const auto browser = QoroInAppWebViewController::create();

    browser->expand(nullptr, "<p>hello", false, 812, 375, opener, UIColor());

    EXPECT_EQ(platform.web->html, "<p>hello");
}

TEST_F(ScreensTest, ATapOnTheBrowsersCloseButtonClosesIt)
{
    opener->windowTempWindow = UIWindow::create({0, 0, 375, 812});
    opener->windowTempWindow.makeKeyAndVisible();
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());

    touch(platform, {355, 20});

    EXPECT_EQ(opener->browsers_closed, 1);
    EXPECT_FALSE(browser->view().superview());
    EXPECT_EQ(platform.web, nullptr) << "its page is silent";
}

TEST_F(ScreensTest, ABrowserMovedToAnotherWindowClosesThere)
{
    const UIWindow host = UIWindow::create({0, 0, 375, 812});
    host.makeKeyAndVisible();
    const auto browser = QoroInAppWebViewController::create();
    browser->setBIsUseNavigationBar(true);
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());
    browser->view().removeFromSuperview();
    host.addSubview(browser->view());
    platform.device_orientation = UIDeviceOrientationLandscapeRight;
    platform.device_orientation_changed();

    touch(platform, {20, 20});

    EXPECT_EQ(opener->browsers_closed, 1);
}

TEST_F(ScreensTest, ADestroyedBrowserRemovesItsView)
{
    const UIWindow host = UIWindow::create({0, 0, 375, 812});
    auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());
    host.addSubview(browser->view());

    browser = nullptr;

    EXPECT_TRUE(host.subviews().empty());
}

// -------------------------------------------------------------------------------------------------- application sheets

struct SheetTest : ScreensTest {
    SheetTest()
    {
        opener->init();
        opener->loadView();
        opener->windowTempWindow = UIWindow::create({0, 0, 375, 812});
        opener->windowTempWindow.makeKeyAndVisible();
        opener->windowTempWindow.addSubview(opener->view());
        opener->openInAppApplicationViewController = sheet;
        sheet->setParentViewController(opener);
    }

    std::shared_ptr<ZulixOpenInAppApplicationViewController> sheet = ZulixOpenInAppApplicationViewController::create();
};

TEST_F(SheetTest, AMessageIsPassedToTheSystemsProgram)
{
    sheet->sendSmsMsg("tel:+15551234", "Hi & bye");

    EXPECT_EQ(platform.opened, Texts{"sms:+15551234?body=Hi%20%26%20bye"});
    EXPECT_EQ(opener->applications_closed, 0) << "the viewer is still writing";

    platform.return_of_viewer();
    EXPECT_EQ(opener->applications_closed, 1);
}

TEST_F(SheetTest, TheEndOfAMessageWaitsForTheBrowserOverIt)
{
    sheet->sendSmsMsg("tel:1", nullptr);
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());

    platform.return_of_viewer();
    EXPECT_EQ(opener->applications_closed, 0);

    browser->closed_by_viewer();
    EXPECT_EQ(opener->browsers_closed, 1);
    EXPECT_EQ(opener->applications_closed, 1);
}

TEST_F(SheetTest, ABrowserThatClosesWhileTheViewerStillWritesEndsNoMessage)
{
    sheet->sendSmsMsg("tel:1", nullptr);
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());

    browser->closed_by_viewer();
    EXPECT_EQ(opener->applications_closed, 0);

    platform.return_of_viewer();
    EXPECT_EQ(opener->applications_closed, 1);
}

TEST_F(SheetTest, TheEndOfAMessageIsNotReportedToAnAdWithAnotherSheet)
{
    sheet->sendSmsMsg("tel:1", nullptr);
    opener->openInAppApplicationViewController = ZulixOpenInAppApplicationViewController::create();

    platform.return_of_viewer();

    EXPECT_EQ(opener->applications_closed, 0);
}

TEST_F(SheetTest, TheEndOfAMessageIsNotReportedToAClosedAd)
{
    sheet->sendSmsMsg("tel:1", nullptr);
    opener->dicEventListener = nullptr;

    platform.return_of_viewer();

    EXPECT_EQ(opener->applications_closed, 0);
}

TEST_F(SheetTest, TheEndOfAMessageAfterItsSheetIsIgnored)
{
    sheet->sendSmsMsg("tel:1", nullptr);
    opener->openInAppApplicationViewController = nullptr;
    sheet = nullptr;

    platform.return_of_viewer();

    EXPECT_EQ(opener->applications_closed, 0);
}

TEST_F(SheetTest, AStoresAddressIsOpenedByTheSystem)
{
    sheet->open_store("https://store.example/42", 7);

    EXPECT_EQ(platform.opened, Texts{"https://store.example/42"});
    EXPECT_EQ(PageScreen::topmost(platform), nullptr);

    platform.return_of_viewer();
    EXPECT_EQ(opener->applications_closed, 1);
}

TEST_F(SheetTest, AProductIsShownByTheSoftwareCentreIfThereIsOne)
{
    platform.opens = "appstream:";

    sheet->open_store("appstream://org.gnome.Maps", 7);

    EXPECT_EQ(platform.opened, Texts{"appstream://org.gnome.Maps"});
    EXPECT_EQ(PageScreen::topmost(platform), nullptr);
}

TEST_F(SheetTest, WithoutASoftwareCentreAProductsPageCoversTheAd)
{
    sheet->open_store("appstream://org.gnome.Maps", 7);

    EXPECT_EQ(platform.opened, Texts{});
    EXPECT_EQ(platform.web->address.absoluteString(), "https://flathub.org/apps/org.gnome.Maps");
}

TEST_F(SheetTest, AnItemsPageCoversTheAdUntilTheViewerClosesIt)
{
    sheet->open_store(nullptr, 42);
    EXPECT_EQ(platform.web->address.absoluteString(), "https://flathub.org/apps/42");
    EXPECT_EQ(platform.opened, Texts{});

    opener->windowTempWindow.addSubview(UIView::create()); // the ad's layout continues beneath
    touch(platform, {355, 20});

    EXPECT_EQ(opener->applications_closed, 1);
    EXPECT_FALSE(sheet->view().superview());
    EXPECT_EQ(platform.web, nullptr);
}

TEST_F(SheetTest, AnItemsPageOfAnAdWithoutAWindowCoversTheHost)
{
    opener->view().removeFromSuperview();
    opener->windowDefaultWindow = UIWindow::create({0, 0, 375, 812});
    opener->windowDefaultWindow.setHidden(false);

    sheet->open_store(nullptr, 42);

    EXPECT_EQ(sheet->view().superview(), opener->windowDefaultWindow);
}

TEST_F(SheetTest, AnItemAboveThirtyTwoBitsHasAPageOfItsOwn)
{
    sheet->open_store(nullptr, 6'443'914'720);

    EXPECT_EQ(platform.web->address.absoluteString().text(), "https://flathub.org/apps/6443914720");
}

TEST_F(SheetTest, AnItemWithoutANumberIsReportedAsHavingNoPage)
{
    sheet->open_store(nullptr, 0);

    EXPECT_FALSE(platform.web->address);
    EXPECT_NE(PageScreen::topmost(platform), nullptr);
}

TEST_F(SheetTest, AnAdThatClosesItsSheetTakesThePageOffTheScreen)
{
    sheet->open_store(nullptr, 42);

    opener->QoroPhoneGapViewController::closeInAppApplication();

    EXPECT_FALSE(sheet->view().superview());
    EXPECT_EQ(PageScreen::topmost(platform), nullptr);
}

TEST_F(ScreensTest, AnApplicationScreenReportsItsSheets)
{
    const auto screen = ZulixOpenInAppApplicationViewController::create();

    screen->sendSmsMsg("tel:123", nullptr);
    screen->open_store(nullptr, 42);

    EXPECT_EQ(platform.transcript, (Texts{"kit do=application.create", "kit do=sendSms number=tel:123 body=null",
                                          "kit do=openStore url=null id=42"}));
}

TEST_F(ScreensTest, AnEndingApplicationScreenNotifiesItsParentIfItHasOne)
{
    const auto screen = ZulixOpenInAppApplicationViewController::create();
    screen->setParentViewController(opener);

    screen->finished();
    screen->setParentViewController(nullptr);
    screen->finished();

    EXPECT_EQ(opener->applications_closed, 1);
}

// --------------------------------------------------------------------------------------------------------- store page

TEST_F(ScreensTest, AStorePageShowsItsItemAtTheHostsAddress)
{
    QoroAdManager::sharedInstance().set_store_page(
        "http://store.example/{id}?again={id}&c={campaign}&p={provider}&a={adProvider}");

    const auto page = QoroAppStoreMockViewController::initWithStoreId("a b/c", "{id}", nullptr, "x&y");

    EXPECT_EQ(platform.web->address.absoluteString(),
              "http://store.example/a%20b%2Fc?again=a%20b%2Fc&c=%7Bid%7D&p=&a=x%26y");
}

TEST_F(ScreensTest, AStorePageWithoutAHostAddressUsesTheDefault)
{
    const auto page = QoroAppStoreMockViewController::initWithStoreId("org.example.Lamps", nullptr, nullptr, nullptr);

    EXPECT_EQ(platform.web->address.absoluteString(), "https://flathub.org/apps/org.example.Lamps");
}

TEST_F(ScreensTest, AStorePageFillsItsWindowAndFollowsIt)
{
    const UIWindow window = UIWindow::create();
    const auto delegate = std::make_shared<StoreDelegate>();
    const auto page = QoroAppStoreMockViewController::initWithStoreId("42", nullptr, nullptr, nullptr);
    page->setDelegate(delegate);
    window.setRootViewController(page);
    window.makeKeyAndVisible();
    EXPECT_EQ(page->view().frame(), (CGRect{0, 0, 375, 812})) << "a window without a frame fills the screen";

    window.setFrame({0, 255, 375, 557});
    EXPECT_EQ(page->view().frame(), (CGRect{0, 0, 375, 557}));
    touch(platform, {355, 275});

    EXPECT_EQ(delegate->dismissed, page);
}

TEST_F(ScreensTest, AReplacedStorePageLeavesItsWindow)
{
    const UIWindow window = UIWindow::create();
    window.setRootViewController(QoroAppStoreMockViewController::initWithStoreId("42", nullptr, nullptr, nullptr));
    window.setRootViewController(QoroAppStoreMockViewController::initWithStoreId("43", nullptr, nullptr, nullptr));

    EXPECT_EQ(window.subviews(), std::vector<UIView>{window.rootViewController()->view()});
}

TEST_F(ScreensTest, APresentedStorePageCoversViewsAddedLater)
{
    const auto delegate = std::make_shared<StoreDelegate>();
    opener->loadView();
    const UIWindow window = UIWindow::create({0, 0, 768, 1024});
    window.makeKeyAndVisible();
    window.addSubview(opener->view());
    const auto page = QoroAppStoreMockViewController::initWithStoreId("42", nullptr, nullptr, nullptr);
    page->setDelegate(delegate);

    opener->presentViewController(page, true, nullptr);
    const UIView later = UIView::create();
    later.setFrame({0, 0, 768, 1024});
    window.addSubview(later);
    touch(platform, {748, 20});

    EXPECT_EQ(delegate->dismissed, page);
    page->dismissViewController(true, nullptr);
    EXPECT_FALSE(page->view().superview());
}

TEST_F(ScreensTest, AStorePageReportsItsIdsAndItsPresentation)
{
    const auto page = QoroAppStoreMockViewController::initWithStoreId("42", "c", nullptr, "a");
    opener->presentViewController(page, true, nullptr);
    EXPECT_TRUE(page->isBeingPresented());
    page->dismissViewController(true, nullptr);

    EXPECT_FALSE(page->isBeingPresented());
    EXPECT_EQ(platform.transcript,
              (Texts{"kit do=store.create ids=[42,c,null,a]", "kit do=store.present", "kit do=store.dismiss"}));
}

TEST_F(ScreensTest, AnotherScreensPresentationIsNotReported)
{
    opener->presentViewController(std::make_shared<UIViewController>(), true, nullptr);

    EXPECT_TRUE(platform.transcript.empty());
}

TEST_F(ScreensTest, AStorePageDismissedByTheViewerNotifiesItsDelegate)
{
    const auto delegate = std::make_shared<StoreDelegate>();
    const auto page = QoroAppStoreMockViewController::initWithStoreId("42", nullptr, nullptr, nullptr);
    page->setDelegate(delegate);

    page->dismissed_by_viewer();
    EXPECT_EQ(delegate->dismissed, page);

    delegate->dismissed = nullptr;
    page->setDelegate({});
    page->dismissed_by_viewer();
    EXPECT_EQ(delegate->dismissed, nullptr);
}

} // namespace
} // namespace qoro
