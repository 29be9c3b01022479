#pragma once

#include "platform/EventTable.h"
#include "platform/Purposes.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

namespace qoro
{

// Every event is a plain structure with the table of its line in a trace. docs/simulator.md describes the lines.

namespace event
{

// ------------------------------------------------------------------------------------------------ Running a session

/// A step of a scenario begins.
struct StepBegun {
    std::int64_t n;
    EventText key;
    const Value* value;

    static constexpr auto table =
        line("step", field("n", &StepBegun::n), field_named_by(&StepBegun::key, &StepBegun::value, "<key>"));
};

/// The return value of a step's operation.
struct Returned {
    EventText command;
    const Value* value;

    static constexpr auto table =
        line("return", field("command", &Returned::command), field("value", &Returned::value));
};

/// The controller's state, group by group (formats/Snapshot.h).
struct Snapshot {
    const Value* fields;
    const Value* superclass;
    const Value* ad;
    const Value* player;
    const Value* timers;
    const Value* views;

    static constexpr auto table =
        line("snapshot", field("fields", &Snapshot::fields), field("super", &Snapshot::superclass),
             field("ad", &Snapshot::ad), field("player", &Snapshot::player), field("timers", &Snapshot::timers),
             field("views", &Snapshot::views));
};

/// The platform rejected an operation.
struct Faulted {
    EventText operation;
    EventText message;

    static constexpr auto table =
        line("fault", field("operation", &Faulted::operation), field("message", &Faulted::message));
};

/// The controller of a video ad is destroyed.
struct Released {
    static constexpr auto table = line("released");
};

/// An ad has closed; hiding its video is not a close. Emitted once per ad, before its player and views are removed.
struct AdClosed {
    ClosedBy by;

    static constexpr auto table = unwritten();
};

/// The ad's own server received the request of a tracker.
struct ServerHit {
    EventText method;
    EventText url;

    static constexpr auto table = line("hit", field("method", &ServerHit::method), field("url", &ServerHit::url));
};

// ---------------------------------------------------------------------------------------------------------- Network

/// An address is requested.
struct Requested {
    EventText url;
    RequestPurpose purpose;

    static constexpr auto table = line("request", field("url", &Requested::url), field("for", &Requested::purpose));
};

/// A picture is fetched.
struct Fetched {
    EventText url;
    FetchPurpose purpose;

    static constexpr auto table = line("fetch", field("url", &Fetched::url), field("for", &Fetched::purpose));
};

/// Requests beyond the ad's limit were not sent.
struct RequestRefused {
    EventText url;
    EventText why;
    std::int64_t times;

    static constexpr auto table =
        action_line("kit", "request.refused", field("url", &RequestRefused::url), field("why", &RequestRefused::why),
                    field("times", &RequestRefused::times));
};

// --------------------------------------------------------------------------------------------------------- The page

/// The web view loads a page.
struct PageLoaded {
    EventText html;
    EventText base;

    static constexpr auto table = line("page", field("html", &PageLoaded::html), field("base", &PageLoaded::base));
};

/// The listeners of the page's script are called.
struct ScriptEvent {
    EventText event;
    const Value* data;
    std::int64_t listeners;

    static constexpr auto table = line("js", field("event", &ScriptEvent::event), field("data", &ScriptEvent::data),
                                       field("listeners", &ScriptEvent::listeners));
};

/// The page was denied something.
struct PageRefused {
    EventText kind;
    EventText detail;
    std::int64_t times;

    static constexpr auto table =
        action_line("web", "refused", field("kind", &PageRefused::kind), field("detail", &PageRefused::detail),
                    field("times", &PageRefused::times));
};

/// The page's process ended.
struct PageDied {
    EventText reason;

    static constexpr auto table = action_line("web", "died", field("reason", &PageDied::reason));
};

/// The page could not be fetched.
struct PageFailed {
    EventText url;
    EventText reason;

    static constexpr auto table =
        action_line("web", "failed", field("url", &PageFailed::url), field("reason", &PageFailed::reason));
};

// ------------------------------------------------------------------------------------------ The page's mraid object

/// The page's library asks for the state of the ad.
struct MraidLoaded {
    static constexpr auto table = action_line("mraid", "load");
};

/// The page opens an address.
struct MraidOpened {
    EventText url;

    static constexpr auto table = action_line("mraid", "open", field("url", &MraidOpened::url));
};

/// The page closes the ad.
struct MraidClosed {
    static constexpr auto table = action_line("mraid", "close");
};

/// The page starts or stops drawing its own close control.
struct MraidCustomClose {
    bool flag;

    static constexpr auto table = action_line("mraid", "useCustomClose", field("flag", &MraidCustomClose::flag));
};

/// The page forces an orientation.
struct MraidOrientation {
    EventText orientation;

    static constexpr auto table =
        action_line("mraid", "forceOrientation", field("orientation", &MraidOrientation::orientation));
};

/// The page creates a calendar event.
struct MraidCalendarEvent {
    static constexpr auto table = action_line("mraid", "createCalendarEvent");
};

/// A call was refused.
struct MraidRefused {
    EventText command;
    const Value* arguments;
    EventText why;
    std::int64_t times;

    static constexpr auto table = action_line("mraid", "refused", field("command", &MraidRefused::command),
                                              field("arguments", &MraidRefused::arguments),
                                              field("why", &MraidRefused::why), field("times", &MraidRefused::times));
};

/// The page is sent changes of the ad.
struct MraidTold {
    const Value* facts;

    static constexpr auto table = action_line("mraid", "tell", field("facts", &MraidTold::facts));
};

// --------------------------------------------------------------------------------- Player, sound, device and system

/// A player is created.
struct PlayerCreated {
    EventText url;
    bool file;

    static constexpr auto table =
        action_line("player", "create", field("url", &PlayerCreated::url), field("file", &PlayerCreated::file));
};

/// The player is told to play.
struct PlayerStarted {
    static constexpr auto table = action_line("player", "play");
};

/// The player is told to pause.
struct PlayerPaused {
    static constexpr auto table = action_line("player", "pause");
};

/// The player is told to jump; emitted before it does. In seconds.
struct PlayerSought {
    double to;

    static constexpr auto table = action_line("player", "seek", field("to", &PlayerSought::to));
};

/// The controller gives up its player.
struct PlayerDropped {
    static constexpr auto table = action_line("player", "drop");
};

/// Playback failed.
struct PlayerFailed {
    EventText reason;

    static constexpr auto table = action_line("player", "failed", field("reason", &PlayerFailed::reason));
};

/// The controller sets the volume, 0 to 1.
struct VolumeSet {
    float value;

    static constexpr auto table = line("volume", field("value", &VolumeSet::value));
};

/// The controller forces the device's orientation (UIDeviceOrientation).
struct OrientationForced {
    std::int64_t orientation;

    static constexpr auto table = line("device", field("orientation", &OrientationForced::orientation));
};

/// The system opens an address.
struct AddressOpened {
    EventText url;

    static constexpr auto table = line("openURL", field("url", &AddressOpened::url));
};

/// The controller posts a notification.
struct NotificationPosted {
    EventText name;
    const Value* info;

    static constexpr auto table =
        line("notification", field("name", &NotificationPosted::name), field("info", &NotificationPosted::info));
};

/// A line of the kit's log, with its ZulixLogTag.
struct Logged {
    std::int64_t level;
    EventText message;

    static constexpr auto table = line("log", field("level", &Logged::level), field("message", &Logged::message));
};

/// A line of the console.
struct ConsoleLogged {
    EventText message;

    static constexpr auto table = line("console", field("message", &ConsoleLogged::message));
};

// ----------------------------------------------------------------------------------------- The parent ad controller

/// A click is passed on to the parent.
struct ParentClicked {
    static constexpr auto table = action_line("parent", "clickRequester");
};

/// The close is passed on to the parent.
struct ParentClosed {
    bool close;

    static constexpr auto table = action_line("parent", "closeVideoAdUnit", field("close", &ParentClosed::close));
};

/// The impression is passed on to the parent.
struct ParentImpression {
    static constexpr auto table = action_line("parent", "bIsSendImpression");
};

// --------------------------------------------------------------------------------------------------- The superclass

/// The spinner is shown at a point.
struct ProgressbarShown {
    std::int64_t x;
    std::int64_t y;

    static constexpr auto table =
        action_line("super", "showProgressbar", field("x", &ProgressbarShown::x), field("y", &ProgressbarShown::y));
};

/// The spinner is removed.
struct ProgressbarStopped {
    static constexpr auto table = action_line("super", "stopProgressbar");
};

/// The host's status bar is restored.
struct StatusbarUpdated {
    static constexpr auto table = action_line("super", "updateStatusbar");
};

/// The timers of the player are stopped.
struct UpdateTimerStopped {
    static constexpr auto table = action_line("super", "stopUpdateTimer");
};

/// The impression is sent.
struct ImpressionSent {
    static constexpr auto table = action_line("super", "sendImpression");
};

/// The page asks for the close.
struct MraidCloseCalled {
    static constexpr auto table = action_line("super", "MRAIDClose");
};

/// A screen opens over the ad.
struct ScreenPresented {
    static constexpr auto table = action_line("super", "qoroPresent");
};

/// The viewer leaves the application.
struct ApplicationLeft {
    static constexpr auto table = action_line("super", "qoroLeaveApplication");
};

/// The viewer has returned from another program.
struct ViewSizeChecked {
    static constexpr auto table = action_line("super", "checkViewSizeAfterOpenOtherApp");
};

/// A message or store screen has closed.
struct InAppApplicationClosed {
    static constexpr auto table = action_line("super", "closeInAppApplication");
};

/// A calendar event is passed to the kit.
struct CalendarEventPassed {
    const Value* event;

    static constexpr auto table =
        action_line("super", "createCalendarEvent", field("event", &CalendarEventPassed::event));
};

/// The request for a page failed.
struct AdRequestFailed {
    static constexpr auto table = action_line("super", "failAdRequest");
};

// ------------------------------------------------------------------------------------------- Other parts of the kit

/// A screen is registered with the manager.
struct ExtraViewAdded {
    static constexpr auto table = action_line("kit", "addExtraView");
};

/// A screen is removed from the manager.
struct ExtraViewRemoved {
    static constexpr auto table = action_line("kit", "removeExtraView");
};

/// A message or store screen is created.
struct ApplicationScreenCreated {
    static constexpr auto table = action_line("kit", "application.create");
};

/// A message is composed.
struct MessageSent {
    EventText number;
    EventText body;

    static constexpr auto table =
        action_line("kit", "sendSms", field("number", &MessageSent::number), field("body", &MessageSent::body));
};

/// A store's page is opened by its address or number.
struct StoreOpened {
    EventText url;
    std::int64_t id;

    static constexpr auto table =
        action_line("kit", "openStore", field("url", &StoreOpened::url), field("id", &StoreOpened::id));
};

/// The in-app browser is created.
struct BrowserCreated {
    static constexpr auto table = action_line("kit", "browser.create");
};

/// The in-app browser opens a page.
struct BrowserExpanded {
    EventText url;
    bool custom_close;
    bool navigation_bar;
    bool progress_bar;
    double height;
    double width;
    const Value* background;
    double session;
    std::int64_t sequence;

    static constexpr auto table = action_line(
        "kit", "browser.expand", field("url", &BrowserExpanded::url),
        field("customClose", &BrowserExpanded::custom_close), field("navBar", &BrowserExpanded::navigation_bar),
        field("progressBar", &BrowserExpanded::progress_bar), field("height", &BrowserExpanded::height),
        field("width", &BrowserExpanded::width), field("background", &BrowserExpanded::background),
        field("session", &BrowserExpanded::session), field("sequence", &BrowserExpanded::sequence));
};

/// The in-app browser is closed.
struct BrowserClosed {
    static constexpr auto table = action_line("kit", "browser.close");
};

/// A store page is created for an item.
struct StorePageCreated {
    const Value* ids;

    static constexpr auto table = action_line("kit", "store.create", field("ids", &StorePageCreated::ids));
};

/// The store page is presented over the ad.
struct StorePagePresented {
    static constexpr auto table = action_line("kit", "store.present");
};

/// The store page is dismissed.
struct StorePageDismissed {
    static constexpr auto table = action_line("kit", "store.dismiss");
};

/// A delegate of the host is notified of a failed page.
struct AdFailed {
    EventText to;
    EventText error;

    static constexpr auto table =
        action_line("kit", "adFailed", field("to", &AdFailed::to), field("error", &AdFailed::error));
};

/// The calendar event was passed to the device.
struct CalendarEventAdded {
    static constexpr auto table = action_line("kit", "calendar.add");
};

/// The calendar event was refused.
struct CalendarEventRefused {
    EventText why;

    static constexpr auto table = action_line("kit", "calendar.refused", field("why", &CalendarEventRefused::why));
};

/// A link on a page over the ad opens another program.
struct PageHandedOn {
    EventText url;

    static constexpr auto table = action_line("kit", "page.handOn", field("url", &PageHandedOn::url));
};

/// The close guard shows its button.
struct GuardShown {
    EventText why;

    static constexpr auto table = action_line("guard", "show", field("why", &GuardShown::why));
};

/// The viewer taps the close guard's button.
struct GuardUsed {
    static constexpr auto table = action_line("guard", "close");
};

} // namespace event

/// Everything that leaves the controller.
using Event = std::variant<
    event::StepBegun, event::Returned, event::Snapshot, event::Faulted, event::Released, event::AdClosed,
    event::ServerHit, event::Requested, event::Fetched, event::RequestRefused, event::PageLoaded, event::ScriptEvent,
    event::PageRefused, event::PageDied, event::PageFailed, event::MraidLoaded, event::MraidOpened, event::MraidClosed,
    event::MraidCustomClose, event::MraidOrientation, event::MraidCalendarEvent, event::MraidRefused, event::MraidTold,
    event::PlayerCreated, event::PlayerStarted, event::PlayerPaused, event::PlayerSought, event::PlayerDropped,
    event::PlayerFailed, event::VolumeSet, event::OrientationForced, event::AddressOpened, event::NotificationPosted,
    event::Logged, event::ConsoleLogged, event::ParentClicked, event::ParentClosed, event::ParentImpression,
    event::ProgressbarShown, event::ProgressbarStopped, event::StatusbarUpdated, event::UpdateTimerStopped,
    event::ImpressionSent, event::MraidCloseCalled, event::ScreenPresented, event::ApplicationLeft,
    event::ViewSizeChecked, event::InAppApplicationClosed, event::CalendarEventPassed, event::AdRequestFailed,
    event::ExtraViewAdded, event::ExtraViewRemoved, event::ApplicationScreenCreated, event::MessageSent,
    event::StoreOpened, event::BrowserCreated, event::BrowserExpanded, event::BrowserClosed, event::StorePageCreated,
    event::StorePagePresented, event::StorePageDismissed, event::AdFailed, event::CalendarEventAdded,
    event::CalendarEventRefused, event::PageHandedOn, event::GuardShown, event::GuardUsed>;

/// Receives events.
class EventSink
{
public:
    virtual ~EventSink() = default;
    /// Called synchronously, as the event happens. Its texts and values are valid during the call only.
    virtual void receive(const Event& event) = 0;
};

/// Passes the line of an event to a function, as (what, fields); does not call it for an event that is not written.
/// @param write void(std::string_view what, std::span<const Field> fields)
template <typename Write>
void describe(const Event& event, Write&& write)
{
    std::visit(
        [&write]<typename Type>(const Type& each) {
            if constexpr (!Type::table.what.empty()) {
                const auto fields = event::fields_of(each);
                write(Type::table.what, std::span<const Field>(fields));
            }
        },
        event);
}

} // namespace qoro
