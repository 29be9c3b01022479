#pragma once

#include "platform/EventTable.h"
#include "platform/Export.h"
#include "platform/Purposes.h"
#include "platform/VastEvents.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

namespace QORO_EXPORT qoro
{

// Every event is a plain structure with the table of its line in a trace. docs/simulator.md describes the lines. A
// pointer to a Value is never null; the Value itself may be. Texts and values are valid as long as the event.

/// The events that leave the controller.
namespace event
{

// ------------------------------------------------------------------------------------------------ Running a session

/// A step of a scenario begins.
struct StepBegun {
    std::int64_t n;     ///< Index of the step, from 0.
    EventText key;      ///< Kind of the step, such as "tap".
    const Value* value; ///< Argument of the step, as the scenario gives it.

    static constexpr auto table =
        line("step", field("n", &StepBegun::n), field_named_by(&StepBegun::key, &StepBegun::value, "<key>"));
};

/// A step of a scenario begins that touches the screen.
struct TouchBegun {
    std::int64_t n;     ///< Index of the step, from 0.
    const Value* touch; ///< The point, or a mapping with the selector, as the scenario gives it.
    EventText hit;      ///< Name of the control, or "page" and the page's element; null for a touch of neither.

    static constexpr auto table =
        line("step", field("n", &TouchBegun::n), field("touch", &TouchBegun::touch), field("hit", &TouchBegun::hit));
};

/// The return value of a step's operation; not emitted for an operation without one.
struct Returned {
    EventText command;  ///< Name of the operation or of the script's command.
    const Value* value; ///< The return value; not null.

    static constexpr auto table =
        line("return", field("command", &Returned::command), field("value", &Returned::value));
};

/// The controller's state, group by group (formats/Snapshot.h).
struct Snapshot {
    const Value* fields;     ///< The controller's flags, numbers and dictionaries by name.
    const Value* superclass; ///< The superclass's fields by name.
    const Value* ad;         ///< The properties that the controller may change; null before the ad opens.
    const Value* player;     ///< The player's settings and state; null without a player.
    const Value* timers;     ///< The running timers by field name.
    const Value* views;      ///< The views by name.

    static constexpr auto table =
        line("snapshot", field("fields", &Snapshot::fields), field("super", &Snapshot::superclass),
             field("ad", &Snapshot::ad), field("player", &Snapshot::player), field("timers", &Snapshot::timers),
             field("views", &Snapshot::views));
};

/// The platform rejected an operation, or a callback of the host has thrown.
struct Faulted {
    EventText operation; ///< Name of the rejected operation, or of the callback.
    EventText message;   ///< Why, one line.

    static constexpr auto table =
        line("fault", field("operation", &Faulted::operation), field("message", &Faulted::message));
};

/// The controller of a video ad is destroyed.
struct Released {
    static constexpr auto table = line("released");
};

/// An ad has closed; hiding its video is not a close. Emitted once per ad, before its player and views are removed.
struct AdClosed {
    ClosedBy by; ///< Who closed it.

    static constexpr auto table = unwritten();
};

/// The first picture of a player's video can be seen.
struct FirstPictureShown {
    static constexpr auto table = unwritten();
};

/// The ad's own server received the request of a tracker.
struct ServerHit {
    EventText method; ///< HTTP method.
    EventText url;    ///< Path and query as the client sent them.

    static constexpr auto table = line("hit", field("method", &ServerHit::method), field("url", &ServerHit::url));
};

// ---------------------------------------------------------------------------------------------------------- Network

/// An address is requested.
struct Requested {
    EventText url;          ///< The address, its macros replaced; null for a missing one.
    RequestPurpose purpose; ///< Why it is requested.

    static constexpr auto table = line("request", field("url", &Requested::url), field("for", &Requested::purpose));
};

/// A picture is fetched.
struct Fetched {
    EventText url;        ///< Address of the picture.
    FetchPurpose purpose; ///< What the picture is for.

    static constexpr auto table = line("fetch", field("url", &Fetched::url), field("for", &Fetched::purpose));
};

/// Requests beyond the ad's limit were not sent. Emitted at most once a second, for all refusals since the last one.
struct RequestRefused {
    EventText url;      ///< Address of the first request refused, cut at 1000 bytes.
    EventText why;      ///< Reason of the first refusal, one line.
    std::int64_t times; ///< Number of requests refused.

    static constexpr auto table =
        action_line("kit", "request.refused", field("url", &RequestRefused::url), field("why", &RequestRefused::why),
                    field("times", &RequestRefused::times));
};

// --------------------------------------------------------------------------------------------------------- The page

/// The web view loads a page.
struct PageLoaded {
    EventText html; ///< Source of the page; null when it was not valid UTF-8.
    EventText base; ///< Address that relative references resolve against; null without one.

    static constexpr auto table = line("page", field("html", &PageLoaded::html), field("base", &PageLoaded::base));
};

/// The listeners of the page's script are called. Emitted even when there are none.
struct ScriptEvent {
    EventText event;        ///< Name of the event.
    const Value* data;      ///< A mapping with the event's data; null without data.
    std::int64_t listeners; ///< Number of listeners called.

    static constexpr auto table = line("js", field("event", &ScriptEvent::event), field("data", &ScriptEvent::data),
                                       field("listeners", &ScriptEvent::listeners));
};

/// The page was denied something.
struct PageRefused {
    EventText kind;     ///< What was denied, such as "navigation", "window" or "message".
    EventText detail;   ///< The address or the mistake, cut at 1000 bytes.
    std::int64_t times; ///< Number of refusals that this event represents.

    static constexpr auto table =
        action_line("web", "refused", field("kind", &PageRefused::kind), field("detail", &PageRefused::detail),
                    field("times", &PageRefused::times));
};

/// The page's process ended.
struct PageDied {
    EventText reason; ///< Why, one line.

    static constexpr auto table = action_line("web", "died", field("reason", &PageDied::reason));
};

/// The page could not be fetched.
struct PageFailed {
    EventText url;    ///< Address of the page.
    EventText reason; ///< Why, one line.

    static constexpr auto table =
        action_line("web", "failed", field("url", &PageFailed::url), field("reason", &PageFailed::reason));
};

/// The page's script wrote to its console.
struct PageConsole {
    EventText level;                  ///< "debug", "log", "info", "warn" or "error".
    EventText message;                ///< The text, cut at 1000 bytes.
    EventText file;                   ///< Address of the script, cut at 1000 bytes; null when unknown.
    std::optional<std::int64_t> line; ///< Line of the script, from 1; null when unknown.
    std::int64_t times;               ///< Number of lines that this event represents.

    static constexpr auto table = event::line(
        "page.console", field("level", &PageConsole::level), field("message", &PageConsole::message),
        field("file", &PageConsole::file), field("line", &PageConsole::line), field("times", &PageConsole::times));
};

/// The page has an error.
struct PageError {
    EventText kind;                   ///< "exception", "rejection" or "resource".
    EventText message;                ///< The error, or why the resource did not load; cut at 1000 bytes.
    EventText file;                   ///< Address of the script or the resource, cut at 1000 bytes; null when unknown.
    std::optional<std::int64_t> line; ///< Line of the script, from 1; null when unknown, and for a resource.
    std::optional<std::int64_t> status; ///< HTTP status of the resource; null without an answer.
    std::int64_t times;                 ///< Number of errors that this event represents.

    static constexpr auto table =
        event::line("page.error", field("kind", &PageError::kind), field("message", &PageError::message),
                    field("file", &PageError::file), field("line", &PageError::line),
                    field("status", &PageError::status), field("times", &PageError::times));
};

// ------------------------------------------------------------------------------------------ The page's mraid object

/// The page's library asks for the state of the ad.
struct MraidLoaded {
    static constexpr auto table = action_line("mraid", "load");
};

/// The page opens an address.
struct MraidOpened {
    EventText url; ///< The address, as the page gives it.

    static constexpr auto table = action_line("mraid", "open", field("url", &MraidOpened::url));
};

/// The page closes the ad.
struct MraidClosed {
    static constexpr auto table = action_line("mraid", "close");
};

/// The page starts or stops drawing its own close control.
struct MraidCustomClose {
    bool flag; ///< Whether the page draws it from now on.

    static constexpr auto table = action_line("mraid", "useCustomClose", field("flag", &MraidCustomClose::flag));
};

/// The page forces an orientation.
struct MraidOrientation {
    EventText orientation; ///< "portrait" or "landscape".

    static constexpr auto table =
        action_line("mraid", "forceOrientation", field("orientation", &MraidOrientation::orientation));
};

/// The page creates a calendar event.
struct MraidCalendarEvent {
    static constexpr auto table = action_line("mraid", "createCalendarEvent");
};

/// A call was refused.
struct MraidRefused {
    EventText command;      ///< Name of the call, without "mraid.".
    const Value* arguments; ///< List of its arguments, without those that are too long.
    EventText why;          ///< Why, one line.
    std::int64_t times;     ///< Number of refusals that this event represents.

    static constexpr auto table = action_line("mraid", "refused", field("command", &MraidRefused::command),
                                              field("arguments", &MraidRefused::arguments),
                                              field("why", &MraidRefused::why), field("times", &MraidRefused::times));
};

/// The page is sent changes of the ad.
struct MraidSent {
    const Value* facts; ///< What has changed, by name; or the mapping "error", of "message" and "action".

    static constexpr auto table = action_line("mraid", "tell", field("facts", &MraidSent::facts));
};

// --------------------------------------------------------------------------------- Player, sound, device and system

/// A player is created.
struct PlayerCreated {
    EventText url; ///< Address of the video, or the path of a local copy; null for a null address.
    bool file;     ///< Whether it is a local copy.

    static constexpr auto table =
        action_line("player", "create", field("url", &PlayerCreated::url), field("file", &PlayerCreated::file));
};

/// Command to the player: play.
struct PlayerStarted {
    static constexpr auto table = action_line("player", "play");
};

/// Command to the player: pause.
struct PlayerPaused {
    static constexpr auto table = action_line("player", "pause");
};

/// Command to the player: seek. Emitted before the player does it.
struct PlayerSought {
    double to; ///< Seconds from the start, as commanded: not clamped to the video.

    static constexpr auto table = action_line("player", "seek", field("to", &PlayerSought::to));
};

/// The controller gives up its player.
struct PlayerDropped {
    static constexpr auto table = action_line("player", "drop");
};

/// Playback failed.
struct PlayerFailed {
    EventText reason; ///< Why, one line.

    static constexpr auto table = action_line("player", "failed", field("reason", &PlayerFailed::reason));
};

/// The controller sets the output volume.
struct VolumeSet {
    float value; ///< 0 to 1.

    static constexpr auto table = line("volume", field("value", &VolumeSet::value));
};

/// The controller forces the device's orientation.
struct OrientationForced {
    std::int64_t orientation; ///< A UIDeviceOrientation.

    static constexpr auto table = line("device", field("orientation", &OrientationForced::orientation));
};

/// The system opens an address.
struct AddressOpened {
    EventText url; ///< The address, of any scheme.

    static constexpr auto table = line("openURL", field("url", &AddressOpened::url));
};

/// The controller posts a notification.
struct NotificationPosted {
    EventText name;    ///< Name of the notification.
    const Value* info; ///< Its user info, a mapping; null without one.

    static constexpr auto table =
        line("notification", field("name", &NotificationPosted::name), field("info", &NotificationPosted::info));
};

/// A line of the kit's log.
struct Logged {
    std::int64_t level; ///< A ZulixLogTag.
    EventText message;  ///< Text of the line.

    static constexpr auto table = line("log", field("level", &Logged::level), field("message", &Logged::message));
};

/// A line of the console.
struct ConsoleLogged {
    EventText message; ///< Text of the line.

    static constexpr auto table = line("console", field("message", &ConsoleLogged::message));
};

// ----------------------------------------------------------------------------------------- The parent ad controller

/// A click is passed on to the parent.
struct ParentClicked {
    static constexpr auto table = action_line("parent", "clickRequester");
};

/// The close is passed on to the parent.
struct ParentClosed {
    bool close; ///< Whether the parent is to close too (bNeedCloseParent).

    static constexpr auto table = action_line("parent", "closeVideoAdUnit", field("close", &ParentClosed::close));
};

/// The impression is passed on to the parent.
struct ParentImpression {
    static constexpr auto table = action_line("parent", "bIsSendImpression");
};

// --------------------------------------------------------------------------------------------------- The superclass

/// The spinner is shown at a point, in points of the view that it is added to.
struct ProgressbarShown {
    std::int64_t x; ///< Left edge.
    std::int64_t y; ///< Top edge.

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
    const Value* event; ///< The event as the ad or its page gives it, before it is validated.

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
    EventText number; ///< The number with the scheme "tel:"; null without one.
    EventText body;   ///< Text of the message; null without one.

    static constexpr auto table =
        action_line("kit", "sendSms", field("number", &MessageSent::number), field("body", &MessageSent::body));
};

/// A store's page is opened by its address or number.
struct StoreOpened {
    EventText url;   ///< Address, which takes precedence over the number; null without one.
    std::int64_t id; ///< Number of the item; 0 without one.

    static constexpr auto table =
        action_line("kit", "openStore", field("url", &StoreOpened::url), field("id", &StoreOpened::id));
};

/// The in-app browser is created.
struct BrowserCreated {
    static constexpr auto table = action_line("kit", "browser.create");
};

/// The in-app browser opens a page.
struct BrowserExpanded {
    EventText url;           ///< Address of the page; null without one.
    bool custom_close;       ///< Whether the page draws its own close control.
    bool navigation_bar;     ///< Whether the browser shows back, forward, address and reload.
    bool progress_bar;       ///< Whether the browser shows the progress of the load.
    double height;           ///< Height of the browser in points.
    double width;            ///< Width of the browser in points.
    const Value* background; ///< Colour until the page arrives, [red, green, blue, alpha] from 0 to 1; null for none.
    double session;          ///< The kit's session identifier.
    std::int64_t sequence;   ///< The kit's sequence number.

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
    const Value* ids; ///< List of item, campaign, provider and ad provider, each null when absent.

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
    EventText to;    ///< "qoroDelegate" or "interstitialDelegate".
    EventText error; ///< Why, one line; null without a reason.

    static constexpr auto table =
        action_line("kit", "adFailed", field("to", &AdFailed::to), field("error", &AdFailed::error));
};

/// The calendar event was passed to the device.
struct CalendarEventAdded {
    static constexpr auto table = action_line("kit", "calendar.add");
};

/// The calendar event was refused.
struct CalendarEventRefused {
    EventText why; ///< Why, one line.

    static constexpr auto table = action_line("kit", "calendar.refused", field("why", &CalendarEventRefused::why));
};

/// A stand-in for a program of the device shows the viewer what the program would receive.
struct HandedOver {
    EventText to;   ///< "calendar", "composer" or "store".
    EventText text; ///< What the program would receive.

    static constexpr auto table =
        action_line("kit", "handOver", field("to", &HandedOver::to), field("text", &HandedOver::text));
};

/// A link on a page over the ad opens another program.
struct PageHandedOn {
    EventText url; ///< Address of the link.

    static constexpr auto table = action_line("kit", "page.handOn", field("url", &PageHandedOn::url));
};

/// The close guard shows its button.
struct GuardShown {
    EventText why; ///< Which condition held, such as "the page does not answer".

    static constexpr auto table = action_line("guard", "show", field("why", &GuardShown::why));
};

/// The viewer taps the close guard's button.
struct GuardUsed {
    static constexpr auto table = action_line("guard", "close");
};

} // namespace event

/// Everything that leaves the controller.
using Event = std::variant<
    event::StepBegun, event::TouchBegun, event::Returned, event::Snapshot, event::Faulted, event::Released,
    event::AdClosed, event::FirstPictureShown, event::ServerHit, event::Requested, event::Fetched,
    event::RequestRefused, event::VastTracked, event::VastRequested, event::VastAdBegun, event::VastIgnored,
    event::VastFailed, event::VastWithoutAd, event::PageLoaded, event::ScriptEvent, event::PageRefused, event::PageDied,
    event::PageFailed, event::PageConsole, event::PageError, event::MraidLoaded, event::MraidOpened, event::MraidClosed,
    event::MraidCustomClose, event::MraidOrientation, event::MraidCalendarEvent, event::MraidRefused, event::MraidSent,
    event::PlayerCreated, event::PlayerStarted, event::PlayerPaused, event::PlayerSought, event::PlayerDropped,
    event::PlayerFailed, event::VolumeSet, event::OrientationForced, event::AddressOpened, event::NotificationPosted,
    event::Logged, event::ConsoleLogged, event::ParentClicked, event::ParentClosed, event::ParentImpression,
    event::ProgressbarShown, event::ProgressbarStopped, event::StatusbarUpdated, event::UpdateTimerStopped,
    event::ImpressionSent, event::MraidCloseCalled, event::ScreenPresented, event::ApplicationLeft,
    event::ViewSizeChecked, event::InAppApplicationClosed, event::CalendarEventPassed, event::AdRequestFailed,
    event::ExtraViewAdded, event::ExtraViewRemoved, event::ApplicationScreenCreated, event::MessageSent,
    event::StoreOpened, event::BrowserCreated, event::BrowserExpanded, event::BrowserClosed, event::StorePageCreated,
    event::StorePagePresented, event::StorePageDismissed, event::AdFailed, event::CalendarEventAdded,
    event::CalendarEventRefused, event::HandedOver, event::PageHandedOn, event::GuardShown, event::GuardUsed>;

/// Receives events.
class EventSink
{
public:
    virtual ~EventSink() = default;
    /// Called synchronously, as the event happens. Its texts and values are valid during the call only.
    virtual void receive(const Event& event) = 0;
};

/// Passes the line of an event to a function, as (what, fields); does not call it for an event that is not written.
/// @param event the event
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
