#pragma once

#include "platform/CalendarEvent.h"
#include "platform/Geometry.h"
#include "platform/Translatable.h"
#include "platform/Value.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

// What a platform supplies. Everything here is called on the thread of the main loop, and calls back on it, as an
// event of its own: never inside the call that asked.

namespace qoro
{

class Platform;

// ---------------------------------------------------------------------------------------------------------- time

using TimerId = std::uint64_t;

/// The one queue of the main thread: timers, and work that is to run as an event of its own.
class MainLoop
{
public:
    virtual ~MainLoop() = default;
    /// Seconds since the session's start, on a clock that only goes forward.
    virtual double now() const = 0;
    /// Starts a timer. It keeps its grid (start + n × interval), skips the firings that it missed, and never fires once
    /// stopped. An interval below a microsecond counts as one; one that is not finite never fires.
    /// @param interval seconds
    virtual TimerId start_timer(double interval, bool repeats, std::function<void()> fire) = 0;
    /// Nothing for a timer that has ended.
    virtual void stop_timer(TimerId timer) = 0;
    /// When the timer fires next, in seconds of now(); 0 for a timer that has ended.
    virtual double due(TimerId timer) const = 0;
    /// Runs work as an event of its own, after everything posted before it.
    virtual void post(std::function<void()> work) = 0;
};

// ---------------------------------------------------------------------------------------------------------- video

/// MPMovieLoadState: a set of bits.
inline constexpr int MPMovieLoadStatePlayable = 1;
inline constexpr int MPMovieLoadStatePlaythroughOK = 2;
inline constexpr int MPMovieLoadStateStalled = 4;

enum MPMoviePlaybackState : int {
    MPMoviePlaybackStateStopped = 0,
    MPMoviePlaybackStatePlaying = 1,
    MPMoviePlaybackStatePaused = 2,
    MPMoviePlaybackStateInterrupted = 3,
    MPMoviePlaybackStateSeekingForward = 4,
    MPMoviePlaybackStateSeekingBackward = 5,
};

enum MPMovieFinishReason : int {
    MPMovieFinishReasonPlaybackEnded = 0,
    MPMovieFinishReasonPlaybackError = 1,
    MPMovieFinishReasonUserExited = 2,
};

enum MPMovieScalingMode : int {
    MPMovieScalingModeNone = 0,
    MPMovieScalingModeAspectFit = 1,
    MPMovieScalingModeAspectFill = 2,
    MPMovieScalingModeFill = 3,
};

enum MPMovieControlStyle : int { MPMovieControlStyleNone = 0, MPMovieControlStyleEmbedded = 1 };
enum MPMovieRepeatMode : int { MPMovieRepeatModeNone = 0, MPMovieRepeatModeOne = 1 };
enum MPMovieSourceType : int { MPMovieSourceTypeUnknown = 0, MPMovieSourceTypeFile = 1 };

/// How a player is to play and draw; the values of a new player.
struct PlayerSettings {
    bool should_autoplay = true;
    int scaling_mode = MPMovieScalingModeAspectFit;
    bool fullscreen = false;
    int control_style = MPMovieControlStyleEmbedded;
    int repeat_mode = MPMovieRepeatModeNone;
    int source_type = MPMovieSourceTypeUnknown;
};

/// Hears a player's news, each as an event of its own. The player's readings have changed when it is told.
class PlayerListener
{
public:
    virtual ~PlayerListener() = default;
    virtual void load_state_changed() = 0;
    virtual void playback_state_changed() = 0;
    virtual void finished(int reason) = 0;
};

/// One video, from its loading to its end. The rules that both platforms keep:
/// - it loads at once: the duration is known before the load state is reported as MPMovieLoadStatePlayable alone;
///   after that report playthrough joins it, reported too; after that, with autoplay or a play that came meanwhile, it
///   plays and reports playing;
/// - a pause before the video is loaded takes back a play, not autoplay;
/// - a duration once reported does not change;
/// - a lack of data is load state 4 and playback state 3 (interrupted), each reported; then load state 3 and, unless it
///   was told otherwise meanwhile, playback state 1;
/// - at the end the time is exactly the duration, it reports paused, then finished with reason 0; play after that
///   starts at 0; a seek lifts the end, and play goes on from there;
/// - a seek is held within 0 and the duration;
/// - a failure is playback state 0, reported, then finished with reason 1. A play after it loads the video anew,
///   goes on from where it failed and reports playing; a seek before moves that place and reports nothing. Where a play
///   leads to another failure, that is reported as the first, MostVainPlays times; a play after that does nothing;
/// - a null address, or one that no player can play, fails once, and a play after that does nothing.
/// Destroying it ends playback and all reports. It is never destroyed inside a report of its own.
class PlayerEngine
{
public:
    /// How many plays in a row may fail again after a failure before a player gives its video up. Who hears of a
    /// failure may always play, and would never come to an end.
    static constexpr int MostVainPlays = 3;

    virtual ~PlayerEngine() = default;
    virtual void apply(const PlayerSettings& settings) = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    /// @param time seconds from the start
    virtual void seek(double time) = 0;
    /// Seconds; 0 before anything was played.
    virtual double current_time() const = 0;
    /// Seconds; 0 until it is known.
    virtual double duration() const = 0;
    virtual int load_state() const = 0;
    virtual int playback_state() const = 0;
};

class PlayerFactory
{
public:
    virtual ~PlayerFactory() = default;
    /// A player for an address or a file's path (a null address fails as a missing video does). The listener outlives
    /// the engine.
    virtual std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) = 0;
};

/// The output volume that the viewer hears and may change too.
class OutputVolume
{
public:
    virtual ~OutputVolume() = default;
    /// 0 to 1.
    virtual float value() const = 0;
    /// Sets it; a change is reported (Platform::output_volume_changed) as an event of its own.
    virtual void set_value(float volume) = 0;
    /// Whether a volume view holds a slider on this device.
    virtual bool has_slider() const = 0;
};

// ----------------------------------------------------------------------------------------------------------- page

/// A message of the page's script, as the kit's script library sends it: a command's name and its arguments.
struct ScriptMessage {
    std::string command;
    NSArray arguments;
};

/// What the script gets back.
struct ScriptAnswer {
    /// Null when the command was carried out; else one line that says what was wrong with it.
    NSString error;
    /// The command's result; null for a command without one.
    Value value;
};

/// Hears a page's news, each as an event of its own (should_start and message are asked, and answer at once).
class WebListener
{
public:
    virtual ~WebListener() = default;
    virtual void did_start_load() = 0;
    virtual void did_finish_load() = 0;
    /// Whether a load that the page itself or the viewer asks for may go on.
    /// @param navigation_type UIWebViewNavigationType: 0 a link was followed, 5 anything else
    virtual bool should_start_load(const NSURL& address, int navigation_type) = 0;
    virtual ScriptAnswer message(const ScriptMessage& message) = 0;
    /// A load by address, or one that the page or the viewer began, led nowhere: the page before it stays. Comes
    /// instead of did_finish_load.
    virtual void did_fail_load(const std::string&) {}
    /// Something that page_state() tells has changed, beside the start and the end of a load.
    virtual void page_state_changed() {}
    /// The page wanted what no page gets, and has not got it.
    /// @param what "window", "download", "message", "navigation" or "request"
    /// @param detail the address that it was about; for a message what was wrong with it
    virtual void refused(const std::string& what, const std::string& detail)
    {
        static_cast<void>(what);
        static_cast<void>(detail);
    }
    /// The page's process ended by itself: the page is gone, the ad goes on.
    virtual void died(const std::string& reason) = 0;
    /// The page's script has stopped answering, or answers again. Reported only while the engine watches for it
    /// (WebEngine::watch_responsiveness). A page answers until the opposite is reported; a new page answers again.
    virtual void responsiveness_changed(bool responds) { static_cast<void>(responds); }
};

/// What a browser shows of its page.
struct PageState {
    /// Of what is shown or on its way; null before any.
    NSURL address = {};
    /// The page's own title; empty when it has none.
    std::string title = {};
    /// Whether everything of the page came over a connection that nobody else can read or change.
    bool secure = false;
    /// Whether something is on its way.
    bool loading = false;
    /// How much of it has come, 0 to 1; an estimate.
    double progress = 0;
    /// Whether a page's content is there to be seen, if only in part.
    bool has_content = false;
    bool can_go_back = false;
    bool can_go_forward = false;
};

/// What a page is to its web view.
enum class PageKind {
    /// An ad's own: it finds the script library and the bridge.
    Creative,
    /// Anybody's, in a browser: it knows of neither, and shares nothing with creatives.
    Browsed,
};

/// One web view's engine. One load at a time.
class WebEngine
{
public:
    virtual ~WebEngine() = default;
    /// Shows a page. A null page (a body that was no UTF-8) shows nothing, and reports start and end like any other.
    virtual void load_html(const NSString& html, const NSURL& base) = 0;
    /// Shows what stands under an address (http or https), without asking the listener first. Nothing for any other.
    virtual void load_address(const NSURL& address) = 0;
    /// Nothing where there is no page to go to.
    virtual void go_back() = 0;
    virtual void go_forward() = 0;
    /// Loads anew what page_state() names, or what failed to come; nothing before the first address.
    virtual void reload() = 0;
    virtual PageState page_state() const = 0;
    /// Calls listeners in the page's script, in the order in which they are given, after every earlier call.
    /// @param callbacks the callback ids that the script gave
    /// @param data a mapping, or null for none
    virtual void call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) = 0;
    /// The address of the page that is shown; null before any.
    virtual NSURL current_address() const = 0;
    virtual void set_scales_page_to_fit(bool scales) = 0;
    /// Points of the view to a point of the page: less than 1 where a page was shrunk to fit.
    virtual double page_scale() const { return 1; }
    /// Whether to look now and then if the page's script answers. Off in a new engine; a page that has not answered
    /// when this is switched off counts as answering.
    virtual void watch_responsiveness(bool watch) { static_cast<void>(watch); }
};

class WebEngineFactory
{
public:
    virtual ~WebEngineFactory() = default;
    /// The listener outlives the engine.
    virtual std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) = 0;
};

// -------------------------------------------------------------------------------------------------------- network

struct FetchAnswer {
    bool ok = false;
    /// In words, when not ok.
    std::string error;
    std::string body;
    /// Where the body came from in the end, after redirects.
    std::string final_address;
};

/// What a fetch is for.
enum class FetchKind {
    /// A document that the ad shows: it may be asked for once more when its server fails.
    Page,
    /// A request that its server counts: it goes out at most once.
    Tracker,
    Image,
};

class Fetcher
{
public:
    virtual ~Fetcher() = default;
    /// Fetches an address; the answer comes exactly once, as an event of its own.
    virtual void fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer) = 0;
    /// Fetches an address while the main thread waits, within a time-out.
    virtual FetchAnswer fetch_now(const std::string& address) = 0;
};

// ---------------------------------------------------------------------------------------------- text and pictures

/// A font by family and size in points.
struct FontSpec {
    std::string family = "Arial";
    double size = 17;
    friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

class TextMeasurer
{
public:
    virtual ~TextMeasurer() = default;
    /// The size of a text in points, fractions kept, broken by character and cut to the box. A null text is 0 by 0.
    virtual CGSize measure(const NSString& text, const FontSpec& font, CGSize box) = 0;
};

/// A decoded picture, in the platform's own form.
class DecodedImage
{
public:
    virtual ~DecodedImage() = default;
};

class ImageDecoder
{
public:
    virtual ~ImageDecoder() = default;
    /// Null when the bytes are no picture (PNG or JPEG).
    virtual std::shared_ptr<const DecodedImage> decode(const NSData& bytes) = 0;
};

// --------------------------------------------------------------------------------------------------------- device

/// What does not change while a session runs.
struct DeviceFacts {
    /// The main screen's bounds in points, as held upright; absent when there is no main screen.
    std::optional<CGSize> screen = CGSize{375, 812};
    /// What the current screen's size is to be, whatever the rule says; absent for the rule.
    std::optional<CGSize> current_screen;
    bool phone = true;
    bool ios8 = true;
    /// Null for none.
    NSString imei = "356938035643809";
    /// The host application's display name; null when it has none.
    NSString display_name = "Host App";
    /// Whether texts can be sent; absent when there is no message composer.
    std::optional<bool> can_send_text = true;
};

class Device
{
public:
    virtual ~Device() = default;
    virtual const DeviceFacts& facts() const = 0;
    /// UIDeviceOrientation, 0 to 6.
    virtual int orientation() const = 0;
    /// Sets what orientation() answers until the device is turned.
    virtual void force_orientation(int orientation) = 0;
    /// UIInterfaceOrientation, 1 to 4.
    virtual int status_bar_orientation() const = 0;
    virtual bool status_bar_hidden() const = 0;
    virtual bool can_open(const NSURL& address) = 0;
    virtual void open(const NSURL& address) = 0;
    /// Opens an address for a screen that waits for the viewer to be done there (a message composer, a store).
    /// @param done called at most once, as an event of its own, when the device knows of the viewer's return, or can't
    ///             know of it; also when nothing could be opened
    virtual void open_and_wait(const NSURL& address, std::function<void()> done) = 0;
};

/// Local copies of videos.
class VideoCacheStore
{
public:
    virtual ~VideoCacheStore() = default;
    /// The path of the complete copy of an address; null when there is none.
    virtual NSString path_for(const NSString& address) = 0;
};

/// The viewer's language.
class Translation
{
public:
    virtual ~Translation() = default;
    /// A text of the kit's own in the viewer's language; the text itself where there is no translation.
    virtual std::string translate(const char* text) = 0;
    /// The same for a text that depends on a number; "%d" in it stays as it is.
    virtual std::string translate(const CountedText& text, unsigned long number) = 0;
};

/// The viewer's calendar. An event is handed over; whether it is kept is the viewer's decision, which nobody tells.
class Calendar
{
public:
    virtual ~Calendar() = default;
    /// Whether there is one that takes events.
    virtual bool available() = 0;
    /// Hands an event over.
    /// @return null when it was; else one line that says why not
    virtual NSString add(const CalendarEvent& event) = 0;
};

// -------------------------------------------------------------------------------------------------------- display

/// Shows the view tree. Called whenever something in it changed; a display draws once per frame whatever the count.
class Display
{
public:
    virtual ~Display() = default;
    virtual void needs_display() = 0;
};

// -------------------------------------------------------------------------------------------------------- witness

/// One named value of a witnessed event.
struct Field {
    using Content = std::variant<std::nullptr_t, bool, std::int64_t, double, float, std::string_view, const Value*>;

    Field(std::string_view name, std::nullptr_t) : key(name), content(nullptr) {}
    Field(std::string_view name, bool value) : key(name), content(value) {}
    Field(std::string_view name, int value) : key(name), content(static_cast<std::int64_t>(value)) {}
    Field(std::string_view name, std::int64_t value) : key(name), content(value) {}
    Field(std::string_view name, double value) : key(name), content(value) {}
    Field(std::string_view name, float value) : key(name), content(value) {}
    Field(std::string_view name, const char* value) : key(name), content(std::string_view(value)) {}
    Field(std::string_view name, std::string_view value) : key(name), content(value) {}
    Field(std::string_view name, const std::string& value) : key(name), content(std::string_view(value)) {}
    Field(std::string_view name, const NSString& value) : key(name), content(nullptr)
    {
        if (value)
            content = std::string_view(value.text());
    }
    Field(std::string_view name, const Value& value) : key(name), content(&value) {}

    std::string_view key;
    Content content;
};

/// Is told everything that leaves the controller, as it happens. The fields live only as long as the call.
class Witness
{
public:
    virtual ~Witness() = default;
    virtual void tell(std::string_view what, std::initializer_list<Field> fields) = 0;
};

} // namespace qoro
