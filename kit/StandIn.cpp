#include "kit/StandIn.h"

#include "kit/ScreenTexts.h"
#include "platform/QoroAdManager.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

/// Above the ad's window, which is one level above the status bar, and below the close guard's.
constexpr double Level = UIWindowLevelStatusBar + 50;
constexpr std::string_view MessageScheme = "sms:";

/// A window over the ad with one text.
class StandIn
{
public:
    StandIn(Platform& platform, const char* title, const std::string& text, std::function<void()> closed)
        : window_(UIWindow::create(screen_frame(platform)))
    {
        window_.setWindowLevel(Level);
        screen_ = PageScreen::create(window_, {.bar = PageScreen::Bar::Title, .pages = false}, std::move(closed));
        screen_->show_text(platform.translation().translate(title), text);
        window_.setHidden(false);
    }
    ~StandIn() { window_.setHidden(true); }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

private:
    static CGRect screen_frame(Platform& platform)
    {
        const CGSize screen = platform.device().facts().screen.value_or(CGSize{});
        return {0, 0, screen.width, screen.height};
    }

    const UIWindow window_;
    std::shared_ptr<PageScreen> screen_;
};

/// The stand-ins of a platform that are shown.
struct StandIns {
    std::map<std::uint64_t, StandIn> shown;
    std::uint64_t next = 0;
};

void show(Platform& platform, const char* title, const std::string& text, std::function<void()> closed)
{
    auto& [shown, next] = platform.shared<StandIns>();
    const std::uint64_t number = next++;
    shown.try_emplace(number, platform, title, text, [&platform, number, closed = std::move(closed)] {
        platform.shared<StandIns>().shown.erase(number);
        if (closed)
            closed();
    });
}

/// The part of an iCalendar text that describes the event, with folded lines joined (RFC 5545, 3.1).
std::string shown_event(const std::string& text)
{
    constexpr std::string_view Begin = "BEGIN:VEVENT\r\n";
    const std::size_t begin = text.find(Begin);
    std::string event = text.substr(begin == std::string::npos ? 0 : begin + Begin.size());
    event.resize(std::min(event.find("END:VEVENT"), event.size()));
    for (const std::string_view removed : {"\r\n ", "\r"})
        for (std::size_t at = 0; (at = event.find(removed, at)) != std::string::npos;)
            event.erase(at, removed.size());
    return event;
}

/// The number on one line, and the message below it.
std::string shown_message(std::string_view address)
{
    address.remove_prefix(MessageScheme.size());
    constexpr std::string_view Body = "?body=";
    const std::size_t body = std::min(address.find(Body), address.size());
    std::string shown(address.substr(0, body));
    if (body < address.size())
        shown += "\n\n" + stringByReplacingPercentEscapes(std::string(address.substr(body + Body.size()))).text();
    return shown;
}

} // namespace

std::shared_ptr<PageScreen> store_screen(const UIView& filled, const StoreItem& item, std::function<void()> on_close)
{
    const QoroAdManager& manager = QoroAdManager::sharedInstance();
    const bool pages = manager.has_store_pages();
    auto screen = PageScreen::create(filled, {.bar = PageScreen::Bar::Title, .progress = true, .pages = pages},
                                     std::move(on_close));
    if (pages) {
        screen->show_address(manager.store_page(item));
        return screen;
    }
    std::string text;
    const std::array<std::pair<const char*, const NSString*>, 4> values{{{"id", &item.id},
                                                                         {"campaign", &item.campaign},
                                                                         {"provider", &item.provider},
                                                                         {"adProvider", &item.ad_provider}}};
    for (const auto& [name, value] : values)
        if (*value)
            text.append(text.empty() ? "" : "\n").append(name).append(": ").append(value->text());
    Platform& platform = Platform::current();
    platform.emit(event::HandedOver{"store", text});
    screen->show_text(platform.translation().translate(screen_texts::Store), text);
    return screen;
}

void show_calendar_stand_in(Platform& platform, const std::string& event)
{
    platform.emit(event::HandedOver{"calendar", event});
    show(platform, screen_texts::Calendar, shown_event(event), nullptr);
}

void show_address_stand_in(Platform& platform, const NSURL& address, std::function<void()> closed)
{
    const std::string& text = address.absoluteString().text();
    const bool message = text.starts_with(MessageScheme);
    platform.emit(event::HandedOver{message ? "composer" : "store", text});
    show(platform, message ? screen_texts::Message : screen_texts::Store, message ? shown_message(text) : text,
         std::move(closed));
}

void remove_stand_ins(Platform& platform)
{
    platform.shared<StandIns>().shown.clear();
}

} // namespace qoro
