#include "tests/support/AdSession.h"
#include "tests/support/Views.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

World tablet()
{
    World world = AdSession::manual_world();
    world.device.facts.phone = false;
    return world;
}

void open_store_ad(AdSession& session)
{
    session.ad().strStoreId = "42";
    session.ad().strCampaignId = "c";
    session.ad().strProviderId = "p";
    session.ad().strAdProviderId = "a";
    session.open();
}

std::shared_ptr<QoroAppStoreMockViewController> page_of_phone(const AdSession& session)
{
    return std::static_pointer_cast<QoroAppStoreMockViewController>(session->appStoreWindow.rootViewController());
}

TEST(StorePage, IsNeverShownForAnAdWithoutAStoreId)
{
    AdSession session;

    session.open();
    session.plays();
    session.pauses_at(3);

    EXPECT_FALSE(session->appStoreWindow);
    EXPECT_FALSE(session->qoroAppStoreMockViewController);
    EXPECT_THAT(session.lines("kit"), IsEmpty());
}

TEST(StorePage, OnAPhoneHasAWindowOfItsOwn)
{
    AdSession session;

    open_store_ad(session);

    EXPECT_THAT(session.lines("kit"), ElementsAre(R"(store.create ["42","c","p","a"])"));
    EXPECT_EQ(session->appStoreWindow.windowLevel(), 1001.0);
    EXPECT_EQ(session->appStoreWindow.backgroundColor(), UIColor::whiteColor());
    EXPECT_TRUE(session->appStoreWindow.isKeyWindow());
    EXPECT_FALSE(session->appStoreWindow.isHidden());
    EXPECT_FALSE(session->qoroAppStoreMockViewController);
}

TEST(StorePage, OnAPhoneASecondPageUsesTheWindowAgain)
{
    AdSession session;
    open_store_ad(session);
    const UIWindow window = session->appStoreWindow;
    const auto first = page_of_phone(session);
    window.setHidden(true);
    window.setWindowLevel(5);

    session->createAppStoreViewWithStoreId("43", nullptr, nullptr, nullptr);

    EXPECT_TRUE(session->appStoreWindow == window);
    EXPECT_FALSE(window.isHidden());
    EXPECT_TRUE(window.isKeyWindow());
    EXPECT_EQ(window.windowLevel(), 5);
    EXPECT_NE(page_of_phone(session), first);
}

TEST(StorePage, OnAPhoneAPauseMakesNoFurtherPage)
{
    AdSession session;
    open_store_ad(session);
    session.plays();
    session.forget();

    session.pauses_at(3);

    EXPECT_THAT(session.lines("kit"), IsEmpty());
}

TEST(StorePage, DismissedOnAPhoneClosesTheAd)
{
    AdSession session;
    open_store_ad(session);
    const auto page = page_of_phone(session);
    session.forget();

    page->dismissed_by_viewer();

    EXPECT_EQ(session.count_of("js onhide null 0"), 1U);
    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_FALSE(session->appStoreWindow);
    EXPECT_TRUE(session->windowDefaultWindow.isKeyWindow());
}

TEST(StorePage, DismissedOnAPhoneNotifiesTheAdOnce)
{
    AdSession session;
    open_store_ad(session);
    const auto page = page_of_phone(session);
    page->dismissed_by_viewer();
    session.forget();

    page->dismissed_by_viewer();

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(StorePage, OnATabletIsPresentedAtAPause)
{
    AdSession session(tablet());
    open_store_ad(session);
    session.plays();
    EXPECT_THAT(session.lines("kit"), IsEmpty());

    session.pauses_at(3);

    EXPECT_THAT(session.lines("kit"), ElementsAre(R"(store.create ["42","c","p","a"])", "store.present"));
    EXPECT_TRUE(session->qoroAppStoreMockViewController->isBeingPresented());
    EXPECT_FALSE(session->appStoreWindow);
}

TEST(StorePage, DismissedOnATabletLeavesTheAd)
{
    AdSession session(tablet());
    open_store_ad(session);
    session.plays();
    session.pauses_at(3);
    session.forget();

    session->qoroAppStoreMockViewController->dismissed_by_viewer();

    EXPECT_THAT(session.transcript(), ElementsAre("kit store.dismiss"));
    EXPECT_FALSE(session->qoroAppStoreMockViewController->isBeingPresented());
    EXPECT_TRUE(session->qoroMoviePlayer);
}

TEST(StorePage, DismissedWithoutASenderOnATabletWithoutAPageDoesNothing)
{
    AdSession session(tablet());
    session.open();
    session.forget();

    session->didDismissStoreViewController(nullptr);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(StorePage, DismissedWithoutASenderOnAPhoneClosesTheAdToo)
{
    AdSession session;
    session.open();

    session->didDismissStoreViewController(nullptr);

    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(StoreWindow, IsTakenDownOnAPhone)
{
    AdSession session;
    open_store_ad(session);
    const UIWindow window = session->appStoreWindow;
    session->windowDefaultWindow.addSubview(window);

    session->removeAppStoreWindow();

    EXPECT_EQ(window.windowLevel(), UIWindowLevelNormal);
    EXPECT_TRUE(window.isHidden());
    EXPECT_FALSE(window.superview());
    EXPECT_FALSE(session->appStoreWindow);
    EXPECT_TRUE(session->windowDefaultWindow.isKeyWindow());
}

TEST(StoreWindow, IsTakenDownInAHostWithoutAWindow)
{
    AdSession session;
    open_store_ad(session);
    const UIWindow window = session->appStoreWindow;
    const UIWindow host = session->windowDefaultWindow;
    session->windowDefaultWindow = nullptr;

    session->removeAppStoreWindow();

    EXPECT_TRUE(window.isHidden());
    EXPECT_FALSE(session->appStoreWindow);
    EXPECT_FALSE(host.isKeyWindow());
}

TEST(StoreWindow, IsLeftAloneOnATablet)
{
    AdSession session(tablet());
    const UIWindow window = UIWindow::create();
    window.setWindowLevel(7);
    window.makeKeyAndVisible();
    session->appStoreWindow = window;

    session->removeAppStoreWindow();

    EXPECT_TRUE(session->appStoreWindow == window);
    EXPECT_EQ(window.windowLevel(), 7);
    EXPECT_FALSE(window.isHidden());
    EXPECT_TRUE(window.isKeyWindow());
}

} // namespace
} // namespace qoro
