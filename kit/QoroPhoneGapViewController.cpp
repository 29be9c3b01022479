#include "platform/QoroPhoneGapViewController.h"

#include "kit/CalendarEvent.h"
#include "kit/CloseGuard.h"
#include "kit/Consent.h"
#include "kit/ControlRects.h"
#include "kit/ControlWatch.h"
#include "kit/MessageBudget.h"
#include "kit/Mraid.h"
#include "kit/NetworkZone.h"
#include "kit/NextVideoAddresses.h"
#include "kit/PageReports.h"
#include "kit/RefusalLog.h"
#include "kit/ScriptExtras.h"
#include "platform/QoroAppStoreMockViewController.h"
#include "platform/ZulixOpenInAppApplicationViewController.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

constexpr double SpinnerExtent = 40;
/// Seconds.
constexpr double LayoutRetryInterval = 0.25;
// Limits on what a page may send.
constexpr double MessagesAtOnce = 300;
constexpr double MessagesPerSecond = 100;
constexpr std::size_t MostListeners = 256;
constexpr std::size_t LongestListenerId = 128;
/// UIWebViewNavigationTypeLinkClicked and …Other, which is neither a followed link nor a form.
constexpr std::int64_t NavigationTypeLink = 0;
constexpr std::int64_t NavigationTypeOther = 5;

/// Whether an identifier exceeds the limit. Identifiers are limited because every event carries those of its listeners.
bool is_long(const Value& id)
{
    return id.is_array() || id.is_dictionary() || id.stringValue().length() > LongestListenerId;
}

} // namespace

QoroPhoneGapViewController::QoroPhoneGapViewController()
    : platform_(Platform::current()), messages_(std::make_unique<MessageBudget>(MessagesAtOnce, MessagesPerSecond)),
      refusals_(std::make_unique<RefusalLog>()),
      reports_(std::make_unique<LineLimit>(MessagesAtOnce, MessagesPerSecond))
{
}

QoroPhoneGapViewController::~QoroPhoneGapViewController()
{
    layout_is_done();
    // A window may retain the web view beyond the lifetime of this listener.
    if (webView_)
        webView_.node()->web.reset();
    if (bIsVideoViewController)
        platform_.emit(event::Released{});
}

QoroPhoneGapViewController* QoroPhoneGapViewController::init()
{
    dicEventListener = NSDictionary::dictionary();
    bIsMoreThaniOS8 = platform_.device().facts().ios8;
    return this;
}

void QoroPhoneGapViewController::setQoroMoviePlayer(const MPMoviePlayerController& player)
{
    if (qoroMoviePlayer && !(qoroMoviePlayer == player))
        platform_.emit(event::PlayerDropped{});
    qoroMoviePlayer = player;
}

// --------------------------------------------------------------------------------------------------------- The script

void QoroPhoneGapViewController::addEventListener(const NSString& name, const Value& EventId,
                                                  const Value& successCallBack)
{
    // A listener without an id cannot be called or removed.
    if (!dicEventListener || !name || !EventId)
        return;
    const NSArray known = dicEventListener[name.text()].array();
    const bool there =
        std::ranges::any_of(known, [&](const Value& listener) { return listener.array()[0] == EventId; });
    if (there)
        return;
    std::vector<Value> listeners(known.begin(), known.end());
    listeners.emplace_back(NSArray{EventId, successCallBack});
    dicEventListener.setObject(NSArray(std::move(listeners)), name.text());
    if (!extras_ || !name.isEqualToString(ControlWatch::Event))
        return;
    if (!control_watch_)
        control_watch_ = std::make_shared<ControlWatch>(*this, platform_, [this] { return control_rects(); });
    control_watch_->begin();
}

std::int32_t QoroPhoneGapViewController::removeEventListener(const NSString& name, const Value& EventId)
{
    if (!name)
        return 0;
    const NSArray known = dicEventListener[name.text()].array();
    std::vector<Value> left(known.begin(), known.end());
    if (std::erase_if(left, [&](const Value& listener) { return EventId && listener.array()[0] == EventId; }) == 0)
        return 0;
    if (left.empty())
        dicEventListener.removeObjectForKey(name.text());
    else
        dicEventListener.setObject(NSArray(std::move(left)), name.text());
    return 1;
}

void QoroPhoneGapViewController::listenerCallbackToJS(const NSString& event, const NSDictionary& withData)
{
    const NSArray listeners = dicEventListener[event.text()].array();
    if (platform_.event_sink()) {
        const Value data(withData);
        platform_.emit(event::ScriptEvent{event, &data, static_cast<std::int64_t>(listeners.count())});
    }
    if (listeners.count() == 0)
        return;
    std::vector<Value> callbacks;
    callbacks.reserve(listeners.count());
    for (const Value& listener : listeners)
        callbacks.push_back(listener.array()[1]);
    webView_.callListeners(event.text(), NSArray(std::move(callbacks)), withData);
}

ScriptAnswer QoroPhoneGapViewController::take_script_message(const ScriptMessage& message)
{
    if (!messages_->take(platform_.loop().now())) {
        refused("message", "too many");
        return {"too many messages", nullptr};
    }
    if (Mraid::is_for(message)) {
        if (!mraid_)
            mraid_ = std::make_shared<Mraid>(*this, platform_);
        const auto held = mraid_;
        return held->carry_out(message);
    }
    ScriptAnswer answer;
    const NSString ignored = extras_ ? extras_->reason_to_ignore(message.command) : NSString();
    if (const NSString inward = inward_address_named_by(message))
        answer.error = "this machine and private networks are out of reach: " + inward.text();
    else
        answer = callFromScript(message);
    if (answer.error)
        refused("command", message.command + ": " + answer.error.text());
    else
        answer.error = ignored;
    return answer;
}

void QoroPhoneGapViewController::set_script_extras(std::unique_ptr<ScriptExtras> extras)
{
    extras_ = std::move(extras);
}

/// Where the ad's controls, and the close guard's button, lie over the page.
NSArray QoroPhoneGapViewController::control_rects() const
{
    const auto page = webView_.node();
    if (!extras_ || !page)
        return NSArray(std::vector<Value>{});
    std::vector<NamedControl> controls = extras_->controls();
    if (close_guard_)
        controls.push_back({"closeGuard", close_guard_->button()});
    return rects_over_page(*page, controls, platform_.device().facts().screen.value_or(CGSize{}));
}

/// The address in a command that the page must not reach; null without one. Only the record of a next video names
/// addresses that the ad uses, and no other command takes a record.
NSString QoroPhoneGapViewController::inward_address_named_by(const ScriptMessage& message) const
{
    const std::string& page = strBaseUrl.text();
    if (zone_named_by(page) == NetworkZone::Machine)
        return nullptr;
    NSString inward;
    for (const Value& argument : message.arguments)
        if (!inward && argument.is_dictionary())
            inward = inward_address_in(argument.dictionary(), page, platform_.shared<OpenNetworks>().open,
                                       [this](const NSString& tracker) { return getTrackingUniqueInfo(tracker); });
    return inward;
}

std::optional<std::int64_t> QoroPhoneGapViewController::count_refusal()
{
    return refusals_->count(platform_.loop().now());
}

std::size_t QoroPhoneGapViewController::count_of_listeners() const
{
    std::size_t count = 0;
    for (const NSDictionary::Entry& event : dicEventListener)
        count += event.value.array().count();
    return count;
}

ScriptAnswer QoroPhoneGapViewController::callFromScript(const ScriptMessage& message)
{
    if (message.command == "getConsent")
        return {.error = nullptr, .value = record_of(platform_.shared<ConsentStrings>())};
    const NSArray& arguments = message.arguments;
    const bool adds = message.command == "addEventListener";
    const bool removes = message.command == "removeEventListener";
    if ((adds || removes) && arguments.count() < 2)
        return {message.command + " takes 2 arguments, not " + std::to_string(arguments.count()), nullptr};
    if (adds && (is_long(arguments[1]) || is_long(arguments[2])))
        return {"a listener's id is a number, or a text of at most " + std::to_string(LongestListenerId) + " bytes",
                nullptr};
    if (adds && count_of_listeners() >= MostListeners)
        return {"a page has at most " + std::to_string(MostListeners) + " listeners", nullptr};
    // Without a callback id the listener id is used.
    if (adds)
        addEventListener(arguments[0].string(), arguments[1], arguments[2] ? arguments[2] : arguments[1]);
    else if (removes)
        return {nullptr, removeEventListener(arguments[0].string(), arguments[1])};
    else if (message.command == "MRAIDClose")
        MRAIDClose();
    else if (extras_ && message.command == "replay")
        return {extras_->replay(), nullptr};
    else if (extras_ && message.command == "getControlRects")
        return {nullptr, control_rects()};
    else
        return {"unknown command " + message.command, nullptr};
    return {};
}

void QoroPhoneGapViewController::setCloseButtonAction(const UIButton& button)
{
    close_button_ = button.node();
    // Every layout calls this function before it adds the button again.
    layout_is_done();
    if (mraid_ && mraid_->wants_custom_close() && !std::exchange(repeats_custom_close_, true))
        platform_.loop().post([weak = weak_from_this()] {
            if (const auto self = weak.lock())
                static_cast<QoroPhoneGapViewController&>(*self).repeat_custom_close();
        });
    button.removeAllTargets();
    button.addTarget(bIsClickCloseButton
                         ? action<&QoroPhoneGapViewController::report_close_tap>(this, "onclick_closebtn")
                         : action<&QoroPhoneGapViewController::closeAction>(this, "closeAction"));
}

void QoroPhoneGapViewController::repeat_custom_close()
{
    repeats_custom_close_ = false;
    if (mraid_ && mraid_->wants_custom_close() && facts().custom_close && dicEventListener)
        MRAIDUseCustomClose(true);
}

void QoroPhoneGapViewController::report_close_tap()
{
    listenerCallbackToJS("onclick_closebtn", nullptr);
    if (close_guard_)
        close_guard_->page_took_close_tap();
}

void QoroPhoneGapViewController::MRAIDClose()
{
    platform_.emit(event::MraidCloseCalled{});
}

void QoroPhoneGapViewController::MRAIDUseCustomClose(bool)
{
}

void QoroPhoneGapViewController::changeOrientation(const NSString&)
{
}

AdFacts QoroPhoneGapViewController::facts() const
{
    return {};
}

void QoroPhoneGapViewController::MRAIDCreateCalendarEvent(const Value& event)
{
    platform_.emit(event::CalendarEventPassed{&event});
    const CalendarEventReading read = read_calendar_event(event);
    NSString why = read.error;
    if (!why)
        why = platform_.calendar().available() ? platform_.calendar().add(read.event) : "this device has no calendar";
    if (!why) {
        platform_.emit(event::CalendarEventAdded{});
        return;
    }
    platform_.emit(event::CalendarEventRefused{why});
    if (mraid_)
        mraid_->send_error(why, "createCalendarEvent");
}

NSString QoroPhoneGapViewController::getTrackingUniqueInfo(const NSString& url) const
{
    return url;
}

// ------------------------------------------------------------------------------------------------------- The web view

/// Permits the ad's page to load and to navigate within its document. Any other navigation must use the kit's own means
/// (the action buttons, the in-app browser); here it is refused.
bool QoroPhoneGapViewController::webView(const UIWebView& webView, const NSURL& shouldStartLoadWithRequest,
                                         std::int64_t navigationType)
{
    const std::string_view wanted = shouldStartLoadWithRequest.parts().without_fragment();
    const bool within = !wanted.empty() && (wanted == webView.requestURL().parts().without_fragment() ||
                                            wanted == NSURL::URLWithString(strBaseUrl).parts().without_fragment());
    const bool blank = navigationType == NavigationTypeOther && (wanted.empty() || wanted == "about:blank");
    if (within || blank)
        return true;
    const std::string& address = shouldStartLoadWithRequest.absoluteString().text();
    refused("navigation", address);
    if (navigationType == NavigationTypeLink && mraid_)
        mraid_->send_error(
            "a link leads nowhere, a page opens an address by mraid.open: " + RefusalLog::shortened(address), "open");
    return false;
}

void QoroPhoneGapViewController::webViewDidStartLoad(const UIWebView&)
{
}

void QoroPhoneGapViewController::webViewDidFinishLoad(const UIWebView&)
{
}

void QoroPhoneGapViewController::failAdRequest(const QoroAdRequest& request)
{
    platform_.emit(event::AdRequestFailed{});
    failAdRequest(request.error);
}

void QoroPhoneGapViewController::failAdRequest(const NSError&)
{
}

void QoroPhoneGapViewController::did_start_load()
{
    const auto held = weak_from_this().lock();
    webViewDidStartLoad(webView_);
}

void QoroPhoneGapViewController::did_finish_load()
{
    const auto held = weak_from_this().lock();
    webViewDidFinishLoad(webView_);
}

bool QoroPhoneGapViewController::should_start_load(const NSURL& address, int navigation_type)
{
    const auto held = weak_from_this().lock();
    return webView(webView_, address, navigation_type);
}

ScriptAnswer QoroPhoneGapViewController::message(const ScriptMessage& message)
{
    const auto held = weak_from_this().lock();
    return take_script_message(message);
}

void QoroPhoneGapViewController::refused(const std::string& what, const std::string& detail)
{
    refusals_->report(platform_, what, detail);
}

void QoroPhoneGapViewController::reported(const PageReport& report)
{
    const auto times = reports_->count(platform_.loop().now(), report.times);
    if (times)
        emit_page_report(platform_, report, *times);
}

void QoroPhoneGapViewController::died(const std::string& reason)
{
    const auto held = weak_from_this().lock();
    platform_.emit(event::PageDied{reason});
    take_back_from_page();
}

/// Reverts what the page controlled: a page that is gone cannot close the ad.
void QoroPhoneGapViewController::take_back_from_page()
{
    if (!dicEventListener)
        return;
    std::vector<std::pair<std::string, Value>> listeners;
    for (const NSDictionary::Entry& event : dicEventListener)
        for (const Value& listener : event.value.array())
            listeners.emplace_back(event.key, listener.array()[0]);
    std::ranges::stable_sort(listeners, {}, &std::pair<std::string, Value>::first);
    for (const auto& [name, id] : listeners)
        removeEventListener(name, id);

    const bool suspended = facts().layout_suspended;
    const bool custom_close = facts().custom_close;
    if (custom_close)
        MRAIDUseCustomClose(false);
    const bool turned_back = mraid_ && mraid_->release_orientation();
    mraid_ = nullptr;
    if (turned_back)
        checkVideoSize();
    if (suspended && (custom_close || turned_back))
        lay_out_when_possible();
}

/// Performs the layout that is due after the page's death as soon as it is no longer suspended. Polls, because the end
/// of the suspension is not notified.
void QoroPhoneGapViewController::lay_out_when_possible()
{
    if (layout_due_)
        return;
    layout_due_ = platform_.loop().start_timer(LayoutRetryInterval, true, [weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<QoroPhoneGapViewController>(weak.lock());
        if (!self || self->facts().layout_suspended)
            return;
        self->layout_is_done();
        if (self->dicEventListener)
            self->checkVideoSize();
    });
}

void QoroPhoneGapViewController::layout_is_done()
{
    if (const TimerId due = std::exchange(layout_due_, 0))
        platform_.loop().stop_timer(due);
}

void QoroPhoneGapViewController::responsiveness_changed(bool responds)
{
    if (close_guard_)
        close_guard_->page_responds(responds);
}

void QoroPhoneGapViewController::populateView()
{
    const CGSize screen = view().bounds();
    webView_ = UIWebView::create(*this);
    webView_.setFrame({0, 0, screen.width, screen.height});
    view().addSubview(webView_);
    viewBackground = UIView::create();
    viewBackground.setFrame({0, 0, screen.width, screen.height});
}

// ---------------------------------------------------------------------------------------------- Device and appearance

std::int64_t QoroPhoneGapViewController::getDeviceOriengation() const
{
    return platform_.device().orientation();
}

CGSize QoroPhoneGapViewController::getCurrnetScreenSize() const
{
    const Device& device = platform_.device();
    if (device.facts().current_screen)
        return *device.facts().current_screen;
    const CGSize bounds = device.facts().screen.value_or(CGSize{});
    const auto [short_edge, long_edge] = std::minmax(bounds.width, bounds.height);
    const bool landscape = isLandscape(device.orientation()) || isLandscape(device.status_bar_orientation());
    return landscape ? CGSize{long_edge, short_edge} : CGSize{short_edge, long_edge};
}

bool QoroPhoneGapViewController::shouldAutorotateToInterfaceOrientation(std::int64_t orientation) const
{
    return std::ranges::find(allowedInterfaceOrientations, orientation) != allowedInterfaceOrientations.end();
}

UIColor QoroPhoneGapViewController::formatColor(const NSString& color)
{
    const std::string& text = color.text();
    std::uint32_t argb = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), argb);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return UIColor::whiteColor();
    const auto part = [argb](unsigned shift) { return static_cast<double>((argb >> shift) & 0xFF) / 255; };
    return UIColor::colorWithRed(part(16), part(8), part(0), part(24));
}

NSString QoroPhoneGapViewController::formatPhoneNumber(const NSString& number)
{
    if (!number)
        return nullptr;
    std::string address = "tel:";
    std::ranges::copy_if(number.text(), std::back_inserter(address),
                         [](char c) { return (c >= '0' && c <= '9') || c == '+'; });
    return address;
}

void QoroPhoneGapViewController::updateStatusbar()
{
    platform_.emit(event::StatusbarUpdated{});
    // Called by a close only, and not by one that stops at hiding the video.
    if (!std::exchange(has_closed_, true))
        platform_.emit(event::AdClosed{closer_});
    // The ad is closing: the host regains control of the orientation.
    if (mraid_)
        mraid_->release_orientation();
}

void QoroPhoneGapViewController::showProgressbarPosX(int x, int showPosY, const UIView& addOn)
{
    platform_.emit(event::ProgressbarShown{x, showPosY});
    if (!progressbar_)
        progressbar_ = UIView(std::make_shared<ViewNode>(ViewNode::Kind::Spinner));
    progressbar_.setFrame({static_cast<double>(x), static_cast<double>(showPosY), SpinnerExtent, SpinnerExtent});
    addOn.addSubview(progressbar_);
}

void QoroPhoneGapViewController::stopProgressbar()
{
    platform_.emit(event::ProgressbarStopped{});
    progressbar_.removeFromSuperview();
    progressbar_ = nullptr;
}

// ----------------------------------------------------------------------------------------------------- Running the ad

void QoroPhoneGapViewController::presentViewController(const std::shared_ptr<UIViewController>& controller,
                                                       bool animated, std::function<void()> completion)
{
    if (dynamic_cast<const QoroAppStoreMockViewController*>(controller.get()))
        platform_.emit(event::StorePagePresented{});
    UIViewController::presentViewController(controller, animated, std::move(completion));
}

void QoroPhoneGapViewController::closeAction()
{
}

void QoroPhoneGapViewController::closeVideoAdUnit(bool)
{
}

void QoroPhoneGapViewController::checkVideoSize()
{
}

void QoroPhoneGapViewController::checkViewSizeAfterOpenOtherApp()
{
    platform_.emit(event::ViewSizeChecked{});
    // The listener table is null after the ad has closed.
    if (qoroVideoAdInfo && dicEventListener)
        checkVideoSize();
}

void QoroPhoneGapViewController::stopTimerWith(const NSTimer& timer)
{
    timer.invalidate();
}

void QoroPhoneGapViewController::stopUpdateTimer()
{
    platform_.emit(event::UpdateTimerStopped{});
}

void QoroPhoneGapViewController::sendImpression()
{
    platform_.emit(event::ImpressionSent{});
}

void QoroPhoneGapViewController::setBIsSendImpression(bool)
{
}

void QoroPhoneGapViewController::clickRequester()
{
}

void QoroPhoneGapViewController::qoroPresent()
{
    platform_.emit(event::ScreenPresented{});
}

void QoroPhoneGapViewController::qoroLeaveApplication()
{
    platform_.emit(event::ApplicationLeft{});
}

void QoroPhoneGapViewController::closeInAppWebView()
{
}

void QoroPhoneGapViewController::closeInAppApplication()
{
    platform_.emit(event::InAppApplicationClosed{});
    // The manager retains the screen while it is registered; it is destroyed when this function returns.
    const auto closed = std::move(openInAppApplicationViewController);
    openInAppApplicationViewController = nullptr;
    if (!closed)
        return;
    closed->leave();
    QoroAdManager::sharedInstance().forget_extra_view(closed.get());
}

// The ad's players never enter the system's full-screen mode, so there is nothing to undo.
void QoroPhoneGapViewController::exitFullScreen(const NSNotification&)
{
}

ClosingBy::ClosingBy(QoroPhoneGapViewController& ad, ClosedBy closer)
    : ad_(ad), before_(std::exchange(ad.closer_, closer))
{
}

ClosingBy::~ClosingBy()
{
    ad_.closer_ = before_;
}

} // namespace qoro
