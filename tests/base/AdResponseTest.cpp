#include "tests/support/AdSession.h"

#include <gmock/gmock.h>

namespace qoro
{
namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

World world_with_page(const NetAnswer& answer)
{
    World world = AdSession::manual_world();
    world.net["http://ad/page.html"] = answer;
    return world;
}

World world_with_page(const std::string& body)
{
    return world_with_page(NetAnswer{.ok = true, .error = {}, .body = body, .after = 0});
}

void open_with_page(AdSession& session)
{
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.open();
}

Value button()
{
    return NSDictionary{{"btn_text", "Buy"}};
}

TEST(OpenInAppVideoView, KeepsTheAdAndItsPosition)
{
    AdSession session;

    session->openInAppVideoView(std::make_shared<QoroVideoAd>(), 12.5F);

    EXPECT_TRUE(session->qoroVideoAdInfo);
    EXPECT_EQ(session->fDefaultPosY, 12.5F);
}

TEST(OpenInAppVideoView, TakesTheAdsSeconds)
{
    AdSession session;
    session.ad().iCloseBtnCountdown = 7;
    session.ad().iBufferingSufferTime = 4;
    session.ad().iShowProgressWheel = 2;

    session.open();

    EXPECT_EQ(session->iCountdownCount, 7.0F);
    EXPECT_EQ(session->iBufferingSufferTime, 4);
    EXPECT_EQ(session->iShowProgressWheel, 2);
}

TEST(OpenInAppVideoView, WithoutAVideoNoPlayerStarts)
{
    AdSession session;
    session.ad().strVideoUrl = nullptr;

    session.open();

    EXPECT_FALSE(session->qoroMoviePlayer);
    EXPECT_THAT(session.lines("player"), IsEmpty());
    EXPECT_EQ(session.count_of(R"(notification NotifyOpenVideoExResult {"Result":"1"})"), 0U);
}

TEST(OpenInAppVideoView, CountsTheButtonsUnclampedUntilTheyAreBuilt)
{
    AdSession session;
    session.ad().strVideoUrl = nullptr;
    session.ad().arrayButtonsInfo = {button(), button(), button()};

    session.open();

    EXPECT_EQ(session->buttonPosMode, 3);
}

TEST(OpenInAppVideoView, AnAbsentButtonListLeavesTheCount)
{
    AdSession session;
    session.ad().strVideoUrl = nullptr;
    session->buttonPosMode = ButtonPositionMode_OneButton;

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_OneButton);
}

TEST(OpenInAppVideoView, AnEmptyButtonListCountsNone)
{
    AdSession session;
    session.ad().strVideoUrl = nullptr;
    session.ad().arrayButtonsInfo = NSArray(std::vector<Value>{});
    session->buttonPosMode = ButtonPositionMode_OneButton;

    session.open();

    EXPECT_EQ(session->buttonPosMode, 0);
}

TEST(OpenInAppVideoView, AChangeOfTheOpenedAdTakesEffectAtItsNextReading)
{
    AdSession session;
    session.open();

    session.ad().closeBtnSize = BIG;
    session->checkVideoSize();

    EXPECT_EQ(session->btnClose.frame().width, 60);
}

TEST(OpenInAppVideoView, ThreeButtonsAreTwoOnceTheyAreBuilt)
{
    AdSession session;
    session.ad().arrayButtonsInfo = {button(), button(), button()};

    session.open();

    EXPECT_EQ(session->buttonPosMode, ButtonPositionMode_TwoButton);
}

TEST(VerifyWebUrl, AnyLowerCaseHttpInsideMakesAnAddress)
{
    AdSession session;

    EXPECT_TRUE(session->verifyWebUrlWithString("http://ad/page.html"));
    EXPECT_TRUE(session->verifyWebUrlWithString("ftp://ad/http"));
}

TEST(VerifyWebUrl, CapitalsAndEmptyTextsMakeNoAddress)
{
    AdSession session;

    EXPECT_FALSE(session->verifyWebUrlWithString("HTTP://ad/page.html"));
    EXPECT_FALSE(session->verifyWebUrlWithString(""));
    EXPECT_FALSE(session->verifyWebUrlWithString(nullptr));
}

TEST(LoadWebView, RequestsThePageWithoutTheKitsCloseButtonAndProgressBar)
{
    AdSession session;
    session->bIsUseProgressbar = true;

    session->loadWebView("http://ad/page.html");

    EXPECT_THAT(session.lines("request"), ElementsAre("http://ad/page.html page"));
    EXPECT_TRUE(session->bIsUseCustomClose);
    EXPECT_FALSE(session->bIsUseProgressbar);
}

TEST(DidAdRequester, APageThatNamesTheLibraryGetsItOnce)
{
    AdSession session(world_with_page("<html><head><script src='mraid.js'></script></head></html>"));
    open_with_page(session);

    session.let_pass(0);

    EXPECT_THAT(
        session.lines("page"),
        ElementsAre(R"(<html><head><script type="text/javascript" charset="utf-8" src="kit://script.js"></script>)"
                    "<script src='mraid.js'></script></head></html> http://ad/page.html"));
}

TEST(DidAdRequester, OfTwoHeadsOnlyTheFirstGetsTheScript)
{
    AdSession session(world_with_page("<head>mraid.js<head>"));
    open_with_page(session);

    session.let_pass(0);

    EXPECT_THAT(session.lines("page"),
                ElementsAre(R"(<head><script type="text/javascript" charset="utf-8" src="kit://script.js"></script>)"
                            "mraid.js<head> http://ad/page.html"));
}

TEST(DidAdRequester, APageWithoutTheLibrarysNameStaysAsItIs)
{
    AdSession session(world_with_page("<head></head>MRAID.js"));
    open_with_page(session);

    session.let_pass(0);

    EXPECT_THAT(session.lines("page"), ElementsAre("<head></head>MRAID.js http://ad/page.html"));
}

TEST(DidAdRequester, TheLibrarysNameCountsAtAnyPosition)
{
    AdSession session(world_with_page("<!-- mraid.js --><head></head>"));
    open_with_page(session);

    session.let_pass(0);

    EXPECT_THAT(session.lines("page"),
                ElementsAre(R"(<!-- mraid.js --><head><script type="text/javascript" charset="utf-8" )"
                            R"(src="kit://script.js"></script></head> http://ad/page.html)"));
}

TEST(DidAdRequester, AMissingLibraryPathIsWrittenAsNull)
{
    AdSession session(world_with_page("<head>mraid.js"));
    session->strMRAID2Expanded = nullptr;
    open_with_page(session);

    session.let_pass(0);

    EXPECT_THAT(session.lines("page"),
                ElementsAre(R"html(<head><script type="text/javascript" charset="utf-8" src="(null)"></script>)html"
                            "mraid.js http://ad/page.html"));
}

TEST(DidAdRequester, ALibraryNameWithoutAHeadIsAFaultAndThePageIsNotLoaded)
{
    AdSession session(world_with_page("<body>mraid.js</body>"));
    open_with_page(session);

    session.let_pass(0);

    EXPECT_EQ(session.lines("fault").size(), 1U);
    EXPECT_THAT(session.lines("page"), IsEmpty());
    EXPECT_EQ(session.count_of("log 0 send imp policy 0"), 0U);
    EXPECT_FALSE(session->strBaseUrl);
}

TEST(DidAdRequester, AHeadWithAttributesOrInCapitalsIsNotRecognised)
{
    for (const char* page : {R"(<head lang="en">mraid.js)", "<HEAD>mraid.js"}) {
        AdSession session(world_with_page(page));
        open_with_page(session);

        session.let_pass(0);

        EXPECT_EQ(session.lines("fault").size(), 1U) << page;
    }
}

TEST(DidAdRequester, AfterTheFaultTheAdContinues)
{
    AdSession session(world_with_page("mraid.js"));
    open_with_page(session);
    session.let_pass(0);

    session.plays();

    EXPECT_TRUE(session->bIsPlay);
}

TEST(DidAdRequester, APageThatIsNotUtf8LoadsNothing)
{
    AdSession session(world_with_page("<head>mraid.js\xFF"));
    open_with_page(session);

    session.let_pass(0);

    EXPECT_THAT(session.lines("page"), ElementsAre("null http://ad/page.html"));
    EXPECT_THAT(session.lines("fault"), IsEmpty());
}

TEST(DidAdRequester, LogsTheImpressionPolicyAndSendsNoImpression)
{
    AdSession session(world_with_page("<head>"));
    session->instSendImpPolicy = PageFinished;
    open_with_page(session);

    session.let_pass(0);

    EXPECT_EQ(session.count_of("log 0 send imp policy 2"), 1U);
    EXPECT_EQ(session.count_of("super sendImpression"), 0U);
    EXPECT_EQ(session->strBaseUrl, "http://ad/page.html");
}

/// Writes down the failures it is notified of.
class Delegate final : public QoroAdDelegate
{
public:
    Delegate(Lines& lines, std::string name) : lines_(lines), name_(std::move(name)) {}
    bool responds_to_ad_failed() const override { return true; }
    void onZulixAdFailed(const UIView& view, const NSError& error) override
    {
        lines_.push_back(name_ + (view ? " with a view: " : ": ") + error.text.text());
    }

private:
    Lines& lines_;
    const std::string name_;
};

TEST(FailAdRequest, NotifiesBothDelegatesThroughTheSuperclass)
{
    AdSession session(world_with_page({.ok = false, .error = "not found", .body = {}, .after = 0}));
    Lines failures;
    const auto delegate = std::make_shared<Delegate>(failures, "ad");
    const auto interstitial = std::make_shared<Delegate>(failures, "interstitial");
    session->qoroDelegate = delegate;
    session->interstitialDelegate = interstitial;
    open_with_page(session);
    session.forget();

    session.let_pass(0);

    EXPECT_THAT(session.transcript(), ElementsAre("super failAdRequest", "log 3 InApp failAdRequest"));
    EXPECT_THAT(failures, ElementsAre("ad: not found", "interstitial with a view: not found"));
}

TEST(FailAdRequest, WithoutDelegatesItOnlyLogs)
{
    AdSession session;
    session.forget();

    session->failAdRequest(NSError{"gone"});

    EXPECT_THAT(session.transcript(), ElementsAre("log 3 InApp failAdRequest"));
}

/// A delegate that retains the view it receives.
struct KeepingDelegate : QoroAdDelegate {
    explicit KeepingDelegate(bool answers) : answers_(answers) {}

    bool responds_to_ad_failed() const override { return answers_; }
    void onZulixAdFailed(const UIView& ad_view, const NSError&) override
    {
        ++failures;
        view = ad_view;
    }

    int failures = 0;
    UIView view;

private:
    bool answers_;
};

TEST(FailAdRequest, DelegatesThatDoNotImplementTheMethodAreNotNotified)
{
    AdSession session;
    const auto delegate = std::make_shared<KeepingDelegate>(false);
    const auto interstitial = std::make_shared<KeepingDelegate>(false);
    session->qoroDelegate = delegate;
    session->interstitialDelegate = interstitial;

    session->failAdRequest(NSError{"gone"});

    EXPECT_EQ(delegate->failures, 0);
    EXPECT_EQ(interstitial->failures, 0);
}

TEST(FailAdRequest, TheAdsDelegateGetsTheBannersViewAndTheInterstitialsTheControllers)
{
    struct Banner : QoroBanner {
        UIView getZulixAdView() const override { return view; }
        UIView view = UIView::create();
    };
    AdSession session;
    const auto banner = std::make_shared<Banner>();
    const auto delegate = std::make_shared<KeepingDelegate>(true);
    const auto interstitial = std::make_shared<KeepingDelegate>(true);
    session->qoroBanner = banner;
    session->qoroDelegate = delegate;
    session->interstitialDelegate = interstitial;

    session->failAdRequest(NSError{"gone"});

    EXPECT_TRUE(delegate->view == banner->view);
    EXPECT_TRUE(interstitial->view == session->view());
}

TEST(WebView, NavigationIsDecidedByTheSuperclass)
{
    AdSession session;
    session->strBaseUrl = "http://ad/page.html";
    const auto decides = [&session](const char* address) {
        const NSURL wanted = NSURL::URLWithString(address);
        const bool decided = session->webView(session->webView(), wanted, 0);
        EXPECT_EQ(decided, session->QoroPhoneGapViewController::webView(session->webView(), wanted, 0));
        return decided;
    };

    EXPECT_TRUE(decides("http://ad/page.html"));
    EXPECT_FALSE(decides("http://elsewhere/"));
}

TEST(WebView, AFinishedLoadLaysTheAdOutAgain)
{
    AdSession session;
    session.open();
    session.forget();

    session->webViewDidFinishLoad(session->webView());

    EXPECT_THAT(session.events(), testing::Contains(R"(video_orientation {"orientation":"portrait"})"));
}

TEST(WebView, AFinishedLoadBehindAHiddenVideoChangesNothing)
{
    AdSession session;
    session.open();
    session->bHideVideoToShowWebViewInPortraitMode = true;
    session.forget();

    session->webViewDidFinishLoad(session->webView());

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(WebView, AFinishedLoadBehindAVideoHiddenInLandscapeChangesNothing)
{
    AdSession session;
    session.open();
    session->bHideVideoToShowWebViewInLandscapeMode = true;
    session.forget();

    session->webViewDidFinishLoad(session->webView());

    EXPECT_THAT(session.events(), IsEmpty());
}

TEST(OpenNewWebAction, OpensTheShownPagesAddress)
{
    AdSession session(world_with_page("<head>"));
    open_with_page(session);
    session.let_pass(1);

    session->openNewWebAction();

    EXPECT_THAT(session.lines("openURL"), ElementsAre("http://ad/page.html"));
}

TEST(OpenNewWebAction, WithoutAPageOpensNothing)
{
    AdSession session;
    session.open();

    session->openNewWebAction();

    EXPECT_THAT(session.lines("openURL"), IsEmpty());
}

TEST(HandleWebViewInFront, RemovesAllControlsExceptThree)
{
    AdSession session;
    session.open();

    session->handleWebViewInFront();

    EXPECT_FALSE(session->btnActionOne);
    EXPECT_FALSE(session->btnActionTwo);
    EXPECT_FALSE(session->btnClose);
    EXPECT_FALSE(session->btnPlayAndPause);
    EXPECT_FALSE(session->btnMute);
    EXPECT_FALSE(session->imgTopBackgroundColor);
    EXPECT_FALSE(session->viewTopBackground);
    EXPECT_FALSE(session->imgBottomBackgroundColor);
    EXPECT_FALSE(session->viewButtonBackground);
    EXPECT_FALSE(session->viewBottomBackground);
    EXPECT_FALSE(session->btnReplay);
    EXPECT_FALSE(session->btnClickListener);
    EXPECT_FALSE(session->btnBrandIcon);
    EXPECT_FALSE(session->labelBrandText);
    EXPECT_TRUE(session->btnScreenScale);
    EXPECT_TRUE(session->btnReturnToVideo);
    EXPECT_TRUE(session->labelRemainderTime);
}

TEST(HandleWebViewInFront, TakesEachRemovedControlOffTheScreen)
{
    AdSession session;
    session.open();
    const UIView elsewhere = UIView::create();
    for (const UIView& control : std::initializer_list<UIView>{
             session->btnActionOne, session->btnActionTwo, session->btnClose, session->btnPlayAndPause,
             session->btnMute, session->imgTopBackgroundColor, session->viewTopBackground,
             session->imgBottomBackgroundColor, session->viewButtonBackground, session->viewBottomBackground,
             session->btnReplay, session->btnClickListener, session->btnBrandIcon, session->labelBrandText})
        elsewhere.addSubview(control);

    session->handleWebViewInFront();

    EXPECT_THAT(elsewhere.subviews(), IsEmpty());
}

TEST(HandleWebViewInFront, LeavesTheClosingToThePage)
{
    AdSession session;
    session.ad().bIsWebViewInFront = true;
    session.ad().strWebViewUrl = "http://ad/page.html";
    session.open();
    EXPECT_FALSE(session->btnClose);
    session.forget();

    session.script_says("MRAIDClose");

    EXPECT_EQ(session.events(), std::vector<std::string>{"onhide"});
    EXPECT_FALSE(session->qoroMoviePlayer);
}

TEST(HandleWebViewInFront, FillsTheWindowWithTheVideoAndLaysThePageOverIt)
{
    AdSession session;
    session.open();
    session->windowTempWindow.addSubview(session->playerViewController.view());

    session->handleWebViewInFront();

    EXPECT_EQ(session->playerViewController.view().frame(), (CGRect{0, 0, 375, 812}));
    EXPECT_EQ(session->windowTempWindow.subviews().back(), session->view());
}

TEST(HandleWebViewInFront, InALockedLandscapeHostTheVideoKeepsItsFrame)
{
    AdSession session;
    session.open();
    session->bIsLockOneSideAndIsLandscape = true;
    session->playerViewController.view().setFrame({1, 2, 3, 4});
    session->windowTempWindow.addSubview(session->playerViewController.view());

    session->handleWebViewInFront();

    EXPECT_EQ(session->playerViewController.view().frame(), (CGRect{1, 2, 3, 4}));
    EXPECT_EQ(session->windowTempWindow.subviews().back(), session->view());
}

TEST(HandleWebViewInFront, InALockedLandscapeHostBeforeIOS8TheVideoFillsTheWindow)
{
    World world = AdSession::manual_world();
    world.device.facts.ios8 = false;
    AdSession session(std::move(world));
    session.open();
    session->bIsLockOneSideAndIsLandscape = true;
    session->playerViewController.view().setFrame({1, 2, 3, 4});

    session->handleWebViewInFront();

    EXPECT_EQ(session->playerViewController.view().frame(), (CGRect{0, 0, 375, 812}));
}

TEST(HandleWebViewInFront, WithoutAWindowTheVideoGetsAZeroFrame)
{
    AdSession session;
    session.open();
    session->windowTempWindow = nullptr;

    session->handleWebViewInFront();

    EXPECT_EQ(session->playerViewController.view().frame(), CGRect{});
}

} // namespace
} // namespace qoro
