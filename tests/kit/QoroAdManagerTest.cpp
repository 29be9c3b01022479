#include "platform/QoroAdManager.h"
#include "platform/QoroCountDownView.h"
#include "platform/ZulixVideoCacheManager.h"
#include "tests/support/RecordingPlatform.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace qoro
{
namespace
{

using Texts = std::vector<std::string>;

/// A client of the manager.
struct Asker : Object {
    void didAnswer(const QoroAdRequest& request)
    {
        answers.push_back("ok " + std::string(request.respData.view()) + " from " + request.strTargetURL.text());
        EXPECT_FALSE(request.error.text);
    }
    void didFail(const QoroAdRequest& request)
    {
        answers.push_back("failed " + request.error.text.text());
        EXPECT_FALSE(request.respData);
    }
    Texts answers;
};

struct ManagerTest : testing::Test {
    test::RecordingPlatform platform;
    std::shared_ptr<Asker> asker = std::make_shared<Asker>();

    void ask(const NSString& address, RequestPurpose purpose = RequestPurpose::Tracking)
    {
        QoroAdManager::sharedInstance().connectToServerWithRequest(
            address, action<&Asker::didAnswer>(asker.get(), "didAnswer:"),
            action<&Asker::didFail>(asker.get(), "didFail:"), false, purpose);
    }
};

TEST_F(ManagerTest, IsOnePerPlatform)
{
    QoroAdManager* const first = &QoroAdManager::sharedInstance();
    EXPECT_EQ(first, &QoroAdManager::sharedInstance());

    test::RecordingPlatform other;
    EXPECT_NE(first, &QoroAdManager::sharedInstance());
}

TEST_F(ManagerTest, AnswersARequestOnceAsAnEventOfItsOwn)
{
    platform.world.net["http://t/1"] = {true, "", "body", 0};

    ask("http://t/1");
    EXPECT_TRUE(asker->answers.empty());
    platform.let_pass(1);

    EXPECT_EQ(asker->answers, Texts{"ok body from http://t/1"});
}

TEST_F(ManagerTest, CallsTheFailActionWithTheErrorsText)
{
    platform.world.net["http://t/gone"] = {false, "gone", "", 0.5};

    ask("http://t/gone");
    platform.let_pass(1);

    EXPECT_EQ(asker->answers, Texts{"failed gone"});
}

TEST_F(ManagerTest, ANullAddressFails)
{
    ask(nullptr);
    EXPECT_TRUE(asker->answers.empty());
    platform.let_pass(1);

    EXPECT_EQ(asker->answers, Texts{"failed no address"});
    EXPECT_EQ(platform.transcript, Texts{"request url=null for=tracking"});
}

TEST_F(ManagerTest, ARequestIsTracedWithItsPurpose)
{
    ask("http://ad/p", RequestPurpose::Page);
    ask("http://t/1");
    ask("http://t/2", RequestPurpose::Heartbeat);

    EXPECT_EQ(platform.transcript, (Texts{"request url=http://ad/p for=page", "request url=http://t/1 for=tracking",
                                          "request url=http://t/2 for=tracking"}));
}

TEST_F(ManagerTest, OnlyHeartbeatsAreLimitedByRate)
{
    QoroAdManager::sharedInstance().begin_ad(true);
    for (int n = 0; n < 30; ++n)
        ask("http://t/beat", RequestPurpose::Heartbeat);
    for (int n = 0; n < 30; ++n)
        ask("http://t/1");

    EXPECT_EQ(std::ranges::count(platform.transcript, "request url=http://t/beat for=tracking"), 20);
    EXPECT_EQ(std::ranges::count(platform.transcript, "request url=http://t/1 for=tracking"), 30);
}

TEST_F(ManagerTest, AnUnansweredRequestRetainsItsTarget)
{
    platform.world.net["http://t/slow"] = {true, "", "", 5};
    const std::weak_ptr<Asker> kept = asker;

    ask("http://t/slow");
    asker.reset();
    platform.let_pass(4.9);
    EXPECT_FALSE(kept.expired());
    platform.let_pass(0.2);

    EXPECT_TRUE(kept.expired());
}

TEST_F(ManagerTest, WritesTheKitsLogWithItsLevel)
{
    QoroAdManager::showLog("hello", ZulixLogTagOfWarnning);

    EXPECT_EQ(platform.transcript, Texts{"log level=2 message=hello"});
}

TEST_F(ManagerTest, ReturnsTheDeviceFacts)
{
    platform.device_facts.phone = false;
    platform.device_facts.imei = "123";

    EXPECT_FALSE(QoroAdManager::bIsiPhone());
    EXPECT_EQ(QoroAdManager::sharedInstance().imei(), NSString("123"));
}

TEST_F(ManagerTest, KeepsAnExtraViewUntilItIsRemoved)
{
    auto screen = std::make_shared<UIViewController>();
    const std::weak_ptr<UIViewController> kept = screen;
    const UIViewController* const identity = screen.get();

    QoroAdManager::sharedInstance().addExtraView(screen);
    screen.reset();
    EXPECT_FALSE(kept.expired());
    QoroAdManager::sharedInstance().removeExtraView(identity);

    EXPECT_TRUE(kept.expired());
    EXPECT_EQ(platform.transcript, (Texts{"kit do=addExtraView", "kit do=removeExtraView"}));
}

TEST_F(ManagerTest, RemovingAnUnknownExtraViewIsReportedToo)
{
    QoroAdManager::sharedInstance().removeExtraView(nullptr);

    EXPECT_EQ(platform.transcript, Texts{"kit do=removeExtraView"});
}

TEST_F(ManagerTest, ForgettingAnExtraViewIsNotReported)
{
    const auto screen = std::make_shared<UIViewController>();
    QoroAdManager::sharedInstance().addExtraView(screen);
    platform.transcript.clear();

    QoroAdManager::sharedInstance().forget_extra_view(screen.get());

    EXPECT_EQ(QoroAdManager::sharedInstance().extra_view_count(), 0U);
    EXPECT_TRUE(platform.transcript.empty());
}

TEST(VideoCacheManager, ReturnsAFileIfTheStoreHasACopy)
{
    test::RecordingPlatform platform;
    platform.world.cached["http://ad/v.mp4"] = "/cache/v.mp4";
    const ZulixVideoCacheManager& cache = ZulixVideoCacheManager::sharedInstance();

    EXPECT_TRUE(cache.checkFileExist("http://ad/v.mp4"));
    EXPECT_EQ(cache.getFilePathWithUrl("http://ad/v.mp4"), NSString("/cache/v.mp4"));
    EXPECT_FALSE(cache.checkFileExist("http://ad/w.mp4"));
    EXPECT_FALSE(cache.checkFileExist(nullptr));
    EXPECT_EQ(cache.getFilePathWithUrl(nullptr), NSString());
}

TEST(CountDownView, ShowsItsInitialSecondsAndThenTheLatest)
{
    test::RecordingPlatform platform;
    const auto view = QoroCountDownView::initWithFrame({1, 2, 50, 50}, 5, 3);

    EXPECT_EQ(view.frame(), (CGRect{1, 2, 50, 50}));
    EXPECT_EQ(view.seconds(), 5);
    view.updateWithSeconds(4.9);
    EXPECT_EQ(view.seconds(), 4.9);
}

TEST(CountDownView, RequestsARedrawOnlyWhenItsSecondsChange)
{
    test::RecordingPlatform platform;
    const auto view = QoroCountDownView::initWithFrame({0, 0, 50, 50}, 5, 3);
    const int before = platform.display_requests;

    view.updateWithSeconds(5);
    EXPECT_EQ(platform.display_requests, before);
    view.updateWithSeconds(4.9);
    EXPECT_EQ(platform.display_requests, before + 1);
}

TEST(CountDownView, ANullOneShowsNothing)
{
    const QoroCountDownView none;

    none.updateWithSeconds(3);

    EXPECT_EQ(none.seconds(), 0);
}

} // namespace
} // namespace qoro
