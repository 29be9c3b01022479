#include "host/Session.h"

#include "formats/Fields.h"
#include "formats/Operations.h"
#include "formats/Snapshot.h"
#include "host/ControlNames.h"
#include "host/ControllerExtras.h"
#include "kit/PageScreen.h"
#include "views/ViewNode.h"

#include <utility>

namespace qoro
{

namespace
{

/// The host's initial view controller.
class HostRoot final : public UIViewController
{
};

/// Seconds that a page has to say which element a touch hits.
constexpr double PagePatience = 2;

CGRect screen_frame()
{
    const CGSize screen = UIScreen::mainScreenBounds().value_or(CGSize{});
    return {0, 0, screen.width, screen.height};
}

} // namespace

Session::Session(Platform& platform, SessionControls& controls, const HostSetup& host, std::shared_ptr<QoroVideoAd> ad)
    : platform_(platform), controls_(controls), ad_(std::move(ad))
{
    set_control_names(platform_);
    platform_.dispatch([&] {
        make_host(host);
        make_controller(host);
    });
}

Session::~Session()
{
    const PlatformScope scope(platform_);
    if (patience_ != 0)
        platform_.loop().stop_timer(patience_);
    guard_.reset();
    controller_.reset();
    parent_.reset();
    host_root_.reset();
    host_window_ = nullptr;
}

void Session::make_host(const HostSetup& host)
{
    host_window_ = UIWindow::create(screen_frame());
    if (host.root_view) {
        host_root_ = std::make_shared<HostRoot>();
        host_root_->loadView();
        const bool fills_screen = *host.root_view == CGSize{};
        host_root_->view().setFrame(fills_screen ? screen_frame()
                                                 : CGRect{0, 0, host.root_view->width, host.root_view->height});
        host_window_.setRootViewController(host_root_);
    }
    if (host.key_window)
        host_window_.makeKeyAndVisible();
    else
        host_window_.setHidden(false);
    QoroAdManager::sharedInstance().set_store_page(host.store_page);
    QoroAdManager::sharedInstance().begin_ad(host.tracker_limit);
    platform_.shared<ConsentStrings>() = host.consent;
    if (host.parent)
        parent_ = std::make_shared<ParentController>();
    if (host.delegate)
        delegate_ = std::make_shared<HostDelegate>("qoroDelegate");
    if (host.interstitial_delegate)
        interstitial_delegate_ = std::make_shared<HostDelegate>("interstitialDelegate");
}

void Session::make_controller(const HostSetup& host)
{
    auto controller = QoroVideoWebViewController::create();
    controller->bIsLockOneSide = host.lock_one_side;
    controller->bIsLockOneSideAndIsLandscape = host.lock_one_side_landscape;
    controller->bIsLockOneSideAndIsPortrait = host.lock_one_side_portrait;
    controller->bUseAutoRotate = host.use_auto_rotate;
    controller->instSendImpPolicy = host.impression_policy;
    controller->allowedInterfaceOrientations = host.autorotates;
    controller->rootViewController = host_root_;
    controller->qoroDelegate = delegate_;
    controller->interstitialDelegate = interstitial_delegate_;
    controller->strCookieGuid = host.guid;
    controller->dSessionId = host.session;
    controller->iSeqNo = host.sequence;
    controller->strMRAID2Expanded = host.script;
    if (!controller->init())
        return;
    controller->set_script_extras(std::make_unique<ControllerExtras>(*controller));
    controller_ = controller;
    living_ = controller;
    if (host.guard)
        guard_ = CloseGuard::create(controller, *host.guard);
    controller->loadView();
    if (parent_)
        controller->setParentViewController(parent_);
    if (host.parent_window)
        controller->addOnParentWindow(UIWindow::create(screen_frame()));
    controller->viewDidAppear(true);
}

void Session::open(float y)
{
    if (const auto controller = controller_)
        controller->openInAppVideoView(ad_, y);
}

bool Session::leave_screen()
{
    const auto screen = PageScreen::topmost(platform_);
    if (screen)
        platform_.dispatch([&] { screen->close(); });
    return screen != nullptr;
}

void Session::close(ClosedBy closer)
{
    platform_.dispatch([&] {
        // The first call may only hide a video that covers the page.
        for (int calls = 0; calls < 2; ++calls) {
            const auto ad = living();
            if (!ad || ad->has_closed())
                return;
            const ClosingBy scope(*ad, closer);
            ad->closeAction();
        }
    });
}

void Session::release()
{
    const auto released = std::exchange(controller_, nullptr);
}

// -------------------------------------------------------------------------------------------------------------- steps

/// Performs each kind of step. Steps that go through the host's reference have no effect once the host has released the
/// controller.
struct Session::Performer {
    Session& session;
    /// Retained until the step is done; null once the host has released it.
    const std::shared_ptr<QoroVideoWebViewController> controller;

    void operator()(const OpenStep& step) const { session.open(step.y); }

    void operator()(const TapStep& step) const
    {
        if (controller)
            button_named(*controller, step.button).sendTouchUpInside();
    }

    /// Begins as an event of its own (begin_touch).
    void operator()(const TouchStep&) const {}

    void operator()(const ScriptStep& step) const
    {
        if (controller && session.controls_.page_runs(controller->webView()))
            emit_return(step.message.command, controller->take_script_message(step.message).value);
    }

    void operator()(const PlayerStep& step) const
    {
        if (const auto living = session.living())
            session.controls_.bring_news(living->qoroMoviePlayer, step.news);
    }

    void operator()(const PageStep& step) const
    {
        if (const auto living = session.living())
            session.controls_.break_page(living->webView(), step.fault);
    }

    void operator()(const ServersStep& step) const
    {
        for (const ServersStep::Change& change : step.changes)
            session.controls_.change_server(change);
    }

    void operator()(const DeviceStep& step) const { session.controls_.change_device(step.change); }

    void operator()(const AppStep& step) const
    {
        switch (step.event) {
        case AppStep::Event::Background:
            session.platform_.leave_app();
            break;
        case AppStep::Event::Foreground:
            session.platform_.application_will_enter_foreground();
            break;
        case AppStep::Event::Active:
            session.platform_.application_did_become_active();
            break;
        }
    }

    void operator()(const InterruptStep& step) const { session.platform_.audio_interrupted(step.type); }

    void operator()(const CallStep& step) const
    {
        if (controller)
            emit_return(step.operation, call_operation(*controller, step.operation, step.arguments));
    }

    void operator()(const SnapshotStep&) const
    {
        if (controller)
            emit_snapshot(session.platform_, *controller);
    }

    void operator()(const ReleaseStep&) const { session.release(); }

    void emit_return(std::string_view command, const Value& value) const
    {
        if (value)
            session.platform_.emit(event::Returned{command, &value});
    }
};

void Session::perform(const Step& step, std::size_t n)
{
    if (!waiting_.empty())
        waiting_.emplace_back(step, n);
    else
        begin(step, n);
}

void Session::begin(const Step& step, std::size_t n)
{
    if (const auto* touch = std::get_if<TouchStep>(&step.what))
        return begin_touch(step, n, *touch);
    platform_.dispatch([&] {
        platform_.emit(event::StepBegun{static_cast<std::int64_t>(n), step.key, &step.value});
        const bool releases = std::holds_alternative<ReleaseStep>(step.what);
        std::visit(Performer{*this, releases ? nullptr : controller_}, step.what);
    });
}

void Session::begin_touch(const Step& step, std::size_t n, const TouchStep& touch)
{
    waiting_.emplace_front(step, n);
    const std::uint64_t number = ++aims_;
    const auto answered = [self = std::weak_ptr(self_), number](const TouchAim& aim) {
        const auto session = self.lock();
        if (session && (*session)->aims_ == number)
            (*session)->aimed(aim);
    };
    platform_.dispatch([&] { aim_touch(platform_, touch, controller_, answered); });
    if (aims_ != number)
        return;
    // A page that does not answer receives the touch once its script runs again.
    patience_ = platform_.loop().start_timer(PagePatience, false, [answered, &platform = platform_, touch] {
        const bool at_point = touch.selector.empty();
        answered({at_point ? hit_test(platform, touch.point) : nullptr, "page"});
    });
}

void Session::aimed(const TouchAim& aim)
{
    if (patience_ != 0)
        platform_.loop().stop_timer(std::exchange(patience_, 0));
    const auto [step, n] = std::move(waiting_.front());
    // Until the touch has been delivered, no other step runs.
    ++aims_;
    platform_.dispatch([&, &step = step, n = n] {
        const auto retained = controller_;
        platform_.emit(
            event::TouchBegun{static_cast<std::int64_t>(n), &step.value, aim.hit ? EventText(*aim.hit) : EventText()});
        deliver_touch(platform_, aim);
    });
    waiting_.pop_front();
    while (!waiting_.empty()) {
        const auto [next, number] = std::move(waiting_.front());
        waiting_.pop_front();
        begin(next, number);
        if (std::holds_alternative<TouchStep>(next.what))
            return;
    }
}

} // namespace qoro
