#include "kit/Mraid.h"

#include "kit/NetworkZone.h"
#include "kit/PagePlace.h"
#include "platform/QoroPhoneGapViewController.h"
#include "platform/UIKit.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace qoro
{

namespace
{

/// Seconds after a touch of the page during which it may make a request that requires one.
constexpr double TouchLasts = 1;
/// Schemes that a page may open.
constexpr std::array<std::string_view, 4> OpenableSchemes{"http", "https", "tel", "sms"};

bool can_open(std::string_view beginning)
{
    return UIApplication::sharedApplication().canOpenURL(NSURL::URLWithString(beginning));
}

/// Layouts without content, such as a video without a size, yield non-finite numbers.
double number(double points)
{
    return std::isfinite(points) ? points : 0;
}

NSDictionary record_of(const CGRect& rect)
{
    return {
        {"x", number(rect.x)}, {"y", number(rect.y)}, {"width", number(rect.width)}, {"height", number(rect.height)}};
}

NSDictionary record_of(CGSize size)
{
    return {{"width", number(size.width)}, {"height", number(size.height)}};
}

/// Truncates a value for a trace line.
/// @param room remaining budget: bytes of text, plus one for every other value; what exceeds it is omitted
Value shortened(const Value& value, std::size_t& room)
{
    if (value.is_string()) {
        const NSString text = value.string();
        if (text.text().size() <= room) {
            room -= text.text().size();
            return text;
        }
        room = 0;
        return "(too long)";
    }
    if (value.is_array()) {
        std::vector<Value> entries;
        for (const Value& entry : value.array())
            if (room > 0)
                entries.push_back(shortened(entry, --room));
        return NSArray(std::move(entries));
    }
    if (value.is_dictionary()) {
        NSDictionary entries = NSDictionary::dictionary();
        for (const NSDictionary::Entry& entry : value.dictionary())
            if (room > entry.key.size()) {
                room -= entry.key.size();
                entries.setObject(shortened(entry.value, room), entry.key);
            }
        return entries;
    }
    return value;
}

Value shown(const Value& arguments)
{
    std::size_t room = 1000;
    return shortened(arguments, room);
}

double to_a_tenth(double percentage)
{
    return std::round(percentage * 10) / 10;
}

} // namespace

// ----------------------------------------------------------------------------------------------------------- Commands

struct Mraid::Command {
    std::string_view name;
    /// Number of required arguments.
    std::size_t arguments;
    bool needs_touch;
    NSString (Mraid::*run)(const NSArray& arguments);
};

const Mraid::Command* Mraid::command_named(std::string_view name)
{
    static constexpr std::array Commands{
        Command{"load", 0, false, &Mraid::load},
        Command{"close", 0, false, &Mraid::close},
        Command{"unload", 0, false, &Mraid::close},
        Command{"useCustomClose", 1, false, &Mraid::use_custom_close},
        Command{"setOrientationProperties", 1, false, &Mraid::set_orientation},
        Command{"open", 1, true, &Mraid::open},
        Command{"playVideo", 1, true, &Mraid::play_video},
        Command{"createCalendarEvent", 1, true, &Mraid::create_calendar_event},
        Command{"expand", 0, false, &Mraid::refuse_size},
        Command{"resize", 0, false, &Mraid::refuse_size},
        Command{"storePicture", 0, false, &Mraid::refuse_picture},
    };
    const auto* const found = std::ranges::find(Commands, name, &Command::name);
    return found == Commands.end() ? nullptr : found;
}

Mraid::Mraid(QoroPhoneGapViewController& ad, Platform& platform) : ad_(ad), platform_(platform)
{
}

// Without a notification: its first recipient would be the ad that is being destroyed.
Mraid::~Mraid()
{
    if (forced_ && platform_.device().orientation() == forced_->now)
        platform_.device().force_orientation(forced_->before);
}

ScriptAnswer Mraid::carry_out(const ScriptMessage& message)
{
    const std::string_view name = std::string_view(message.command).substr(Prefix.size());
    const Value arguments(message.arguments);
    const Command* command = command_named(name);
    NSString refusal;
    if (!command)
        refusal = "unknown command " + message.command;
    else if (!ad_.dicEventListener)
        refusal = "the ad has closed";
    else if (message.arguments.count() < command->arguments)
        refusal = message.command + " takes " + std::to_string(command->arguments) + " arguments, not " +
                  std::to_string(message.arguments.count());
    else
        refusal =
            command->needs_touch ? run_on_touch(*command, message.arguments) : (this->*command->run)(message.arguments);
    const auto times = refusal ? ad_.count_refusal() : std::nullopt;
    if (times) {
        const Value cut = shown(arguments);
        platform_.emit(event::MraidRefused{.command = name, .arguments = &cut, .why = refusal, .times = *times});
    }
    return {.error = refusal, .value = {}};
}

/// Runs a command that requires a touch. A touch permits one successful request; a refused one does not consume it.
NSString Mraid::run_on_touch(const Command& command, const NSArray& arguments)
{
    const auto page = ad_.webView().node();
    const auto touched = page ? std::exchange(page->page_touched, std::nullopt) : std::nullopt;
    if (!touched || platform_.loop().now() - *touched > TouchLasts)
        return "this needs a new touch of the page, not older than a second";
    const NSString refusal = (this->*command.run)(arguments);
    if (refusal && !page->page_touched)
        page->page_touched = touched;
    return refusal;
}

NSString Mraid::close(const NSArray&)
{
    platform_.emit(event::MraidClosed{});
    ad_.MRAIDClose();
    return nullptr;
}

NSString Mraid::use_custom_close(const NSArray& arguments)
{
    wants_custom_close_ = arguments[0].boolValue();
    platform_.emit(event::MraidCustomClose{wants_custom_close_});
    ad_.MRAIDUseCustomClose(wants_custom_close_);
    return nullptr;
}

NSString Mraid::set_orientation(const NSArray& arguments)
{
    const NSString forced = arguments[0].dictionary()["forceOrientation"].string();
    const bool landscape = forced.isEqualToString("landscape");
    if (!landscape && !forced.isEqualToString("portrait")) {
        if (release_orientation())
            ad_.checkVideoSize();
        return nullptr; // follows the device
    }
    platform_.emit(event::MraidOrientation{forced});
    release_orientation();
    const UIDeviceOrientation before = platform_.device().orientation();
    const UIDeviceOrientation now = landscape ? UIDeviceOrientationLandscapeLeft : UIDeviceOrientationPortrait;
    // After five seconds the ad compares its layout with the device's orientation and adopts the latter, so the device
    // has to report the forced orientation. Either landscape side will do.
    const bool held_so = landscape && isLandscape(before);
    forced_ = Forced{.before = before, .now = held_so || !ad_.facts().both_arrangements ? before : now};
    set_device_orientation(forced_->now);
    ad_.changeOrientation(forced);
    return nullptr;
}

bool Mraid::release_orientation()
{
    const auto forced = std::exchange(forced_, std::nullopt);
    if (forced && platform_.device().orientation() == forced->now)
        set_device_orientation(forced->before);
    return forced.has_value();
}

void Mraid::set_device_orientation(UIDeviceOrientation orientation)
{
    Device& device = platform_.device();
    if (device.orientation() == orientation)
        return;
    device.force_orientation(orientation);
    platform_.device_orientation_changed();
}

NSString Mraid::open(const NSArray& arguments)
{
    const NSURL address = NSURL::URLWithString(arguments[0].string());
    if (!std::ranges::any_of(OpenableSchemes,
                             [&](std::string_view scheme) { return address.parts().has_scheme(scheme); }))
        return "an address begins with http:, https:, tel: or sms:";
    return leave_for(address);
}

NSString Mraid::play_video(const NSArray& arguments)
{
    const NSURL address = NSURL::URLWithString(arguments[0].string());
    if (!address.parts().has_scheme("http") && !address.parts().has_scheme("https"))
        return "a video's address begins with http: or https:";
    return leave_for(address);
}

/// Opens an address outside the application, in the system's program for it.
NSString Mraid::leave_for(const NSURL& address)
{
    const NSString& text = address.absoluteString();
    if (leads_inward(ad_.strBaseUrl.text(), text.text(), platform_.shared<OpenNetworks>().open))
        return "this machine and private networks are out of reach";
    if (!UIApplication::sharedApplication().canOpenURL(address))
        return "nothing here opens " + text.text();
    platform_.emit(event::MraidOpened{text});
    UIApplication::sharedApplication().openURL(address);
    ad_.qoroPresent();
    ad_.qoroLeaveApplication();
    return nullptr;
}

NSString Mraid::create_calendar_event(const NSArray& arguments)
{
    platform_.emit(event::MraidCalendarEvent{});
    ad_.MRAIDCreateCalendarEvent(arguments[0]);
    return nullptr;
}

NSString Mraid::refuse_size(const NSArray&)
{
    return "an interstitial neither expands nor resizes";
}

NSString Mraid::refuse_picture(const NSArray&)
{
    return "pictures are not stored";
}

// -------------------------------------------------------------------------------------------------------------- Facts

NSString Mraid::load(const NSArray& arguments)
{
    platform_.emit(event::MraidLoaded{});
    callback_ = arguments[0];
    sent_ = NSDictionary::dictionary();
    if (!watch_) {
        watch_ = std::make_unique<ViewWatch>(platform_, [this] { look_later(); });
        NSNotificationCenter& news = platform_.shared<NSNotificationCenter>();
        news.addObserver(action<&Mraid::volume_changed>(this, "volume_changed"), SystemVolumeDidChangeNotification);
        news.addObserver(action<&Mraid::went_to_background>(this, "went_to_background"),
                         UIApplicationDidEnterBackgroundNotification);
        news.addObserver(action<&Mraid::came_back>(this, "came_back"), UIApplicationWillEnterForegroundNotification);
    }
    send_changes();
    return nullptr;
}

/// Capabilities that are constant while the ad runs.
NSDictionary Mraid::features() const
{
    return {
        {"sms", can_open("sms:1")}, {"tel", can_open("tel:1")}, {"calendar", platform_.calendar().available()},
        {"storePicture", false},    {"inlineVideo", true},      {"vpaid", false},
        {"location", false},
    };
}

NSDictionary Mraid::facts() const
{
    const auto page = ad_.webView().node();
    const CGSize screen = platform_.device().facts().screen.value_or(CGSize{});
    const PagePlace place =
        page ? place_of_page(*page, screen, page->web ? page->web->page_scale() : 1) : PagePlace{.screen = screen};
    const bool closed = !ad_.dicEventListener;
    const bool seen = place.visible && !in_background_ && !closed;
    return {
        {"orientation",
         NSDictionary{{"orientation", place.screen.width > place.screen.height ? "landscape" : "portrait"},
                      {"locked", ad_.allowedInterfaceOrientations.size() <= 1}}},
        {"screen", record_of(place.screen)},
        {"position", record_of(place.position)},
        {"exposure", NSDictionary{{"exposedPercentage", seen ? to_a_tenth(place.exposed_percentage) : 0},
                                  {"visibleRectangle", seen ? Value(record_of(*place.visible)) : Value()}}},
        {"viewable", seen},
        {"volume", to_a_tenth(100 * static_cast<double>(platform_.volume().value()))},
        {"state", closed ? "hidden" : "default"},
    };
}

/// Coalesces changes; reports after the current event.
void Mraid::look_later()
{
    if (std::exchange(looks_, true))
        return;
    platform_.loop().post([weak = std::weak_ptr(std::static_pointer_cast<Mraid>(shared_from_this()))] {
        if (const auto self = weak.lock()) {
            self->looks_ = false;
            self->send_changes();
        }
    });
}

void Mraid::send_changes()
{
    if (!watch_)
        return;
    NSDictionary news = NSDictionary::dictionary();
    if (sent_.count() == 0)
        news.setObject(features(), "supports");
    for (const NSDictionary::Entry& fact : facts())
        if (!sent_.contains(fact.key) || !(sent_[fact.key] == fact.value))
            news.setObject(fact.value, fact.key);
    if (news.count() == 0)
        return;
    for (const NSDictionary::Entry& fact : news)
        sent_.setObject(fact.value, fact.key);
    send(news);
    if (!ad_.dicEventListener) {
        release_orientation();
        watch_.reset();
    }
}

void Mraid::send_error(const NSString& why, std::string_view action)
{
    if (!watch_)
        return;
    const NSDictionary news{{"error", NSDictionary{{"message", why}, {"action", action}}}};
    send(news);
}

void Mraid::send(const NSDictionary& facts)
{
    const Value sent(facts);
    platform_.emit(event::MraidSent{&sent});
    ad_.webView().callListeners("mraid", NSArray{callback_}, facts);
}

void Mraid::volume_changed()
{
    send_changes();
}

void Mraid::went_to_background()
{
    in_background_ = true;
    send_changes();
}

void Mraid::came_back()
{
    in_background_ = false;
    send_changes();
}

} // namespace qoro
