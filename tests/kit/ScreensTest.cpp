#include "platform/QoroAppStoreMockViewController.h"
#include "platform/QoroInAppWebViewController.h"
#include "platform/QoroPhoneGapViewController.h"
#include "platform/ZulixOpenInAppApplicationViewController.h"
#include "tests/support/RecordingPlatform.h"

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

TEST_F(ScreensTest, ABrowserTellsAllThatItIsOpenedWith)
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

TEST_F(ScreensTest, ABrowserStandsOverTheAdInTheAdsWindow)
{
    opener->windowTempWindow = UIWindow::create({0, 0, 375, 812});
    const auto browser = QoroInAppWebViewController::create();

    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor());

    EXPECT_EQ(browser->view().superview(), opener->windowTempWindow);
    EXPECT_EQ(browser->view().frame(), (CGRect{0, 0, 375, 812}));
}

TEST_F(ScreensTest, ABrowserThatTheViewerClosesTellsItsOpener)
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

TEST_F(ScreensTest, ABrowserThatTheAdClosesTellsNobody)
{
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor::blackColor());
    platform.transcript.clear();

    browser->closeAction();

    EXPECT_EQ(opener->browsers_closed, 0);
    EXPECT_EQ(platform.transcript, Texts{"kit do=browser.close"});
}

TEST_F(ScreensTest, ABrowserWhoseAdIsGoneTellsNobody)
{
    const auto browser = QoroInAppWebViewController::create();
    browser->expand("http://shop/", nullptr, false, 812, 375, opener, UIColor::blackColor());

    browser->removeParentViewController();
    browser->closed_by_viewer();

    EXPECT_EQ(opener->browsers_closed, 0);
}

// -------------------------------------------------------------------------------------------------- application sheets

TEST_F(ScreensTest, AnApplicationScreenTellsItsSheets)
{
    const auto screen = ZulixOpenInAppApplicationViewController::create();

    screen->sendSmsMsg("tel:123", nullptr);
    screen->open_store(nullptr, 42);

    EXPECT_EQ(platform.transcript, (Texts{"kit do=application.create", "kit do=sendSms number=tel:123 body=null",
                                          "kit do=openStore url=null id=42"}));
}

TEST_F(ScreensTest, AnApplicationScreenThatEndsTellsItsParentWhileItHasOne)
{
    const auto screen = ZulixOpenInAppApplicationViewController::create();
    screen->setParentViewController(opener);

    screen->finished();
    screen->setParentViewController(nullptr);
    screen->finished();

    EXPECT_EQ(opener->applications_closed, 1);
}

// --------------------------------------------------------------------------------------------------------- store page

TEST_F(ScreensTest, AStorePageTellsItsIdsAndItsPresentation)
{
    const auto page = QoroAppStoreMockViewController::initWithStoreId("42", "c", nullptr, "a");
    opener->presentViewController(page, true, nullptr);
    EXPECT_TRUE(page->isBeingPresented());
    page->dismissViewController(true, nullptr);

    EXPECT_FALSE(page->isBeingPresented());
    EXPECT_EQ(platform.transcript,
              (Texts{"kit do=store.create ids=[42,c,null,a]", "kit do=store.present", "kit do=store.dismiss"}));
}

TEST_F(ScreensTest, AnotherScreensPresentationIsUntold)
{
    opener->presentViewController(std::make_shared<UIViewController>(), true, nullptr);

    EXPECT_TRUE(platform.transcript.empty());
}

TEST_F(ScreensTest, AStorePageThatTheViewerDismissesTellsItsDelegate)
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
