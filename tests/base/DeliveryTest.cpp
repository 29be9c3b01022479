#include "tests/base/StartingPoints.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

TEST(SendTrackingUrls, SendsTheListInOrderAtOnceWithItsMacros)
{
    AdSession session;
    session.forget();

    session->sendTrackingUrls({"http://t/1?n={Zulix-Seq}", "http://t/2", "http://t/1"});

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/1?n=7", "http://t/2", "http://t/1"));
}

TEST(SendTrackingUrls, ANullOrEmptyListSendsAndLogsNothing)
{
    AdSession session;
    session.forget();

    session->sendTrackingUrls(nullptr);
    session->sendTrackingUrls(NSArray(std::vector<Value>{}));
    session->sendTrackingUrls({nullptr});
    session.let_pass(1);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SendTrackingUrls, AnEntryThatIsNotATextSendsNothing)
{
    AdSession session;
    session.forget();

    session->sendTrackingUrls({5, "http://t/1"});

    EXPECT_THAT(session.fetched(), ElementsAre("http://t/1"));
}

TEST(SendTrackingUrls, AClickMarkerCountsOneClickAndTheAddressIsFetched)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.forget();

    session->sendTrackingUrls({"c", "http://t/1"});

    EXPECT_THAT(session.transcript(), ElementsAre("parent clickRequester", "request http://t/1 tracking"));
}

TEST(SendTrackingUrls, OnlyTheExactMarkerCounts)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.forget();

    session->sendTrackingUrls({"C", " c"});

    EXPECT_THAT(session.transcript(), ElementsAre("request C tracking", "request  c tracking"));
}

TEST(SendTrackingUrls, AMarkerThatAMacroMakesCounts)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session->strCookieGuid = "c";
    session.forget();

    session->sendTrackingUrls({"{Zulix-Guid}"});

    EXPECT_THAT(session.transcript(), ElementsAre("parent clickRequester"));
}

TEST(SendTrackingUrls, WithoutAParentAMarkerDoesNothing)
{
    AdSession session;
    session.forget();

    session->sendTrackingUrls({"c"});

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(SendBtnClickTracking, SendsTheAddressWithoutExpandingIt)
{
    AdSession session;
    session.forget();

    session->sendBtnClickTracking("http://t/{Zulix-Seq}");
    session->sendBtnClickTracking(nullptr);

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/{Zulix-Seq} tracking"));
}

TEST(SendTrackingToServer, ASuccessIsLogged)
{
    AdSession session;
    session.forget();

    session->sendTrackingToServer("http://t/1");
    session.let_pass(0);

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/1 tracking", "log 0 didSendTracking"));
}

TEST(SendTrackingToServer, AFailureIsLoggedAndNotRepeated)
{
    World world = AdSession::manual_world();
    world.net["http://t/1"] = NetAnswer{.ok = false, .error = "gone", .body = {}, .after = 0.5};
    AdSession session(world);
    session.forget();

    session->sendTrackingToServer("http://t/1");
    session.let_pass(60);

    EXPECT_THAT(session.transcript(), ElementsAre("request http://t/1 tracking", "log 0 failSendTracking"));
}

TEST(SendTrackingToServer, ANullAddressIsNotSent)
{
    AdSession session;
    session.forget();

    session->sendTrackingToServer(nullptr);

    EXPECT_THAT(session.transcript(), IsEmpty());
}

TEST(ClickRequester, ReportsTheClickToTheParent)
{
    AdSession session(AdSession::manual_world(), host_with_parent());
    session.forget();

    session->clickRequester();

    EXPECT_THAT(session.transcript(), ElementsAre("parent clickRequester"));
}

/// Records whether an impression was sent, and the lines before that call.
class Parent final : public QoroPhoneGapViewController
{
public:
    explicit Parent(const AdSession& session) : session_(session) {}
    void setBIsSendImpression(bool sent) override
    {
        impression = sent;
        lines_before = session_.transcript();
    }

    std::optional<bool> impression;
    std::vector<std::string> lines_before;

private:
    const AdSession& session_;
};

TEST(SendImpression, CallsTheSuperclassThenTheParent)
{
    AdSession session;
    const auto parent = std::make_shared<Parent>(session);
    session->setParentViewController(parent);
    session.forget();

    session->sendImpression();

    EXPECT_EQ(parent->impression, true);
    EXPECT_THAT(parent->lines_before, ElementsAre("super sendImpression"));
}

TEST(SendImpression, WithoutAParentCallsTheSuperclassAlone)
{
    AdSession session;
    session.forget();

    session->sendImpression();

    EXPECT_THAT(session.transcript(), ElementsAre("super sendImpression"));
}

} // namespace
} // namespace qoro
