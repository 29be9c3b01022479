#include "kit/CloseGuard.h"

#include "kit/PageScreen.h"
#include "kit/ScreenTexts.h"
#include "platform/QoroPhoneGapViewController.h"
#include "views/HeldTurn.h"
#include "views/Turns.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

/// Seconds between checks of state that no view change announces.
constexpr double LookInterval = 0.5;
/// Seconds: rounding tolerance for differences of loop times.
constexpr double Rounding = 1e-6;
/// Width and height of the button in points: the size of a comfortable touch target.
constexpr double Touch = 48;
/// Above the ad's window, which is one level above the status bar.
constexpr double Level = UIWindowLevelStatusBar + 100;

/// Tracks when a condition began to hold.
void keep(std::optional<double>& since, bool holds, double now)
{
    if (!holds)
        since.reset();
    else if (!since)
        since = now;
}

bool lasts(const std::optional<double>& since, double now, double seconds)
{
    return since && now - *since >= seconds - Rounding;
}

} // namespace

/// The guards of a platform by their serial numbers; null once destroyed.
struct CloseGuard::Living {
    std::vector<CloseGuard*> guards;
};

/// What look_later() posts. The guard may be gone by then, so it is named by its serial number. A weak pointer would
/// do, but std::function stores it by an allocation, and these two words without one.
struct CloseGuard::PostedLook {
    const Living* living;
    std::size_t serial;

    void operator()() const
    {
        CloseGuard* const guard = living->guards[serial];
        if (!guard)
            return;
        const auto held = guard->shared_from_this();
        guard->looks_ = false;
        guard->look();
    }
};

std::shared_ptr<CloseGuard> CloseGuard::create(const std::shared_ptr<QoroPhoneGapViewController>& ad,
                                               const CloseGuardTimes& times)
{
    const std::shared_ptr<CloseGuard> guard(new CloseGuard(ad, times));
    guard->start();
    return guard;
}

CloseGuard::CloseGuard(const std::shared_ptr<QoroPhoneGapViewController>& ad, const CloseGuardTimes& times)
    : platform_(Platform::current()), held_ad_(ad), ad_(ad.get()), living_(platform_.shared<Living>()),
      serial_(living_.guards.size()), times_(times)
{
    living_.guards.push_back(this);
}

CloseGuard::~CloseGuard()
{
    platform_.shared<NSNotificationCenter>().removeObserver(this);
    platform_.loop().stop_timer(timer_);
    living_.guards[serial_] = nullptr;
    if (const auto ad = held_ad_.lock())
        ad->set_close_guard(nullptr);
}

void CloseGuard::start()
{
    ad()->set_close_guard(this);
    auto& news = platform_.shared<NSNotificationCenter>();
    news.addObserver(action<&CloseGuard::went_to_background>(this, "went_to_background"),
                     UIApplicationDidEnterBackgroundNotification);
    news.addObserver(action<&CloseGuard::came_back>(this, "came_back"), UIApplicationWillEnterForegroundNotification);
    for (const std::string_view turn :
         {UIDeviceOrientationDidChangeNotification, UIApplicationDidChangeStatusBarFrameNotification})
        news.addObserver(action<&CloseGuard::device_turned>(this, "device_turned"), turn);
    watch_ = std::make_unique<ViewWatch>(platform_, [this] {
        if (is_over())
            hide(); // together with the ad's windows
        else
            look_later();
    });
    look();
}

/// Checks after the current event, when the change to the views is complete.
void CloseGuard::look_later()
{
    if (std::exchange(looks_, true))
        return;
    platform_.loop().post(PostedLook{&living_, serial_});
}

// ------------------------------------------------------------------------------------------------------- Conditions

void CloseGuard::look()
{
    platform_.loop().stop_timer(std::exchange(timer_, 0));
    const auto ad = held_ad_.lock();
    if (is_over()) {
        hide();
        if (ad)
            watch_page(*ad, false);
        return;
    }
    if (is_shown()) {
        lay_out();
        return;
    }
    look_at(*ad);
    if (is_shown())
        return;
    timer_ = platform_.loop().start_timer(until_next_look(), false, [this] {
        const auto self = shared_from_this();
        look();
    });
}

/// Seconds until the next check.
double CloseGuard::until_next_look() const
{
    const double now = platform_.loop().now();
    double wait = LookInterval;
    const auto not_after = [&](const std::optional<double>& since, double seconds) {
        if (since && *since + seconds > now)
            wait = std::min(wait, *since + seconds - now);
    };
    not_after(page_silent_, times_.page_silent);
    not_after(tapped_, times_.tap_unanswered);
    not_after(control_owed_, times_.custom_close);
    not_after(end_owed_, times_.custom_close);
    not_after(motion_.still_since(), times_.nothing_moves);
    return wait;
}

void CloseGuard::look_at(QoroPhoneGapViewController& ad)
{
    const double now = platform_.loop().now();
    if (!is_on_screen() || in_background_ || PageScreen::topmost(platform_)) {
        for (std::optional<double>* since : {&page_silent_, &control_owed_, &tapped_, &end_owed_})
            since->reset();
        motion_.begin_anew(now);
        return;
    }
    const AdFacts facts = ad.facts();
    watch_page(ad, facts.page_closes);
    keep(page_silent_, !page_responds_, now);
    // If the page only handles the button's taps, the ad's button itself is present.
    keep(control_owed_, facts.page_closes && facts.close_due && !ad.close_button().superview(), now);
    if (tapped_ && video_is_hidden() && !video_hidden_at_tap_)
        tapped_.reset();
    const MPMoviePlayerController& player = ad.qoroMoviePlayer;
    motion_.look(player, now);
    const double length = player.duration();
    keep(end_owed_, facts.close_at_end && !facts.close_due && length > 0 && motion_.played() >= length, now);

    if (lasts(page_silent_, now, times_.page_silent))
        show("the page does not answer");
    else if (lasts(tapped_, now, times_.tap_unanswered))
        show("nothing came of a tap on the close button");
    else if (lasts(control_owed_, now, times_.custom_close))
        show("the page draws the close control");
    else if (lasts(end_owed_, now, times_.custom_close) && !can_be_left())
        show("the video has run for its whole length, and does not end");
    else if (lasts(motion_.still_since(), now, times_.nothing_moves) && !can_be_left())
        show("the video does not move, and the ad cannot be closed");
}

/// Watches responsiveness only while the page controls closing; otherwise nothing depends on it.
void CloseGuard::watch_page(QoroPhoneGapViewController& ad, bool watch)
{
    if (std::exchange(watches_page_, watch) == watch)
        return;
    page_responds_ = true;
    if (WebEngine* engine = ad.webView().engine())
        engine->watch_responsiveness(watch);
}

bool CloseGuard::is_over() const
{
    const QoroPhoneGapViewController* const shown = ad();
    return !shown || !shown->dicEventListener;
}

bool CloseGuard::is_on_screen() const
{
    const ViewNode* top = ad()->view().node().get();
    while (top && top->parent)
        top = top->parent;
    return top && top->kind == ViewNode::Kind::Window && !top->hidden;
}

/// Whether the ad's close button can be tapped. Controls drawn by the page cannot be detected.
bool CloseGuard::can_be_left() const
{
    const UIButton button = ad()->close_button();
    return button && touchable_point(*button.node());
}

bool CloseGuard::video_is_hidden() const
{
    return ad()->qoroMoviePlayer.view().isHidden();
}

void CloseGuard::page_took_close_tap()
{
    tapped_ = platform_.loop().now();
    video_hidden_at_tap_ = video_is_hidden();
    look_later();
}

void CloseGuard::page_responds(bool responds)
{
    page_responds_ = responds;
    look_later();
}

void CloseGuard::went_to_background()
{
    in_background_ = true;
}

void CloseGuard::came_back()
{
    in_background_ = false;
}

// -------------------------------------------------------------------------------------------------------------- Button

void CloseGuard::show(std::string_view why)
{
    if (is_shown())
        return;
    platform_.emit(event::GuardShown{why});
    button_ = UIButton::create();
    button_.setAccessibilityLabel(platform_.translation().translate(screen_texts::Close));
    button_.addTarget(action<&CloseGuard::tapped>(this, "tapped"));
    button_.setShowsTouchWhenHighlighted(true);
    button_.node()->symbol = Symbol::CloseOnDisc;
    button_.node()->text_color = UIColor::whiteColor();
    window_ = UIWindow::create({0, 0, Touch, Touch});
    window_.setWindowLevel(Level);
    window_.addSubview(button_);
    lay_out();
}

void CloseGuard::hide()
{
    if (const UIWindow shown = std::exchange(window_, nullptr))
        shown.setHidden(true);
    button_ = nullptr;
}

/// Positions the button at the top right of the screen as the viewer holds it; hides it under a screen of the kit.
void CloseGuard::lay_out()
{
    if (!is_shown())
        return;
    const Device& device = platform_.device();
    const CGSize screen = device.facts().screen.value_or(CGSize{Touch, Touch});
    turn_ = held_turn(device.orientation(), device.status_bar_orientation(), screen, turn_);
    const CGSize held = turned_extents(screen, turn_);
    const CGPoint corner = turned({held.width / 2 - Touch / 2, Touch / 2 - held.height / 2}, -turn_);
    const CGRect frame{screen.width / 2 + corner.x - Touch / 2, screen.height / 2 + corner.y - Touch / 2, Touch, Touch};
    if (!(window_.frame() == frame)) {
        window_.setFrame(frame);
        button_.setTransform(CGAffineTransformMakeRotation(-turn_));
        button_.setFrame({0, 0, Touch, Touch});
    }
    const bool covered = PageScreen::topmost(platform_) != nullptr;
    if (window_.isHidden() != covered)
        window_.setHidden(covered);
}

void CloseGuard::device_turned(const NSNotification&)
{
    lay_out();
}

void CloseGuard::tapped()
{
    const auto self = shared_from_this();
    const auto ad = held_ad_.lock();
    platform_.emit(event::GuardUsed{});
    hide();
    // The first close may only hide a video that covers the page.
    for (int closes = 0; closes < 2 && !is_over(); ++closes)
        ad->closeAction();
}

} // namespace qoro
