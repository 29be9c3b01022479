#pragma once

#include "platform/CalendarEvent.h"
#include "platform/Export.h"
#include "platform/Geometry.h"
#include "platform/Orientation.h"
#include "platform/Translatable.h"
#include "platform/Value.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// The ports that a platform implements. All of them are called on the main-loop thread. Unless stated otherwise a
// callback runs on that thread as an event of its own, never inside the call that requested it.

namespace QORO_EXPORT qoro
{

class Platform;
/// What a display draws of a player, and of a web engine. A platform whose display draws them defines both classes.
class PictureSource;
class WidgetSource;

// ---------------------------------------------------------------------------------------------------------- Time

/// Identifies a timer of one main loop.
using TimerId = std::uint64_t;

/// The event queue of the main thread: timers and posted work.
class MainLoop
{
public:
    virtual ~MainLoop() = default;
    /// Monotonic clock: seconds since the loop was created.
    virtual double now() const = 0;
    /// Starts a timer. A repeating timer fires on the grid start + n × interval and skips firings it missed. A stopped
    /// timer never fires. An interval below a microsecond is rounded up to one; with a non-finite interval the timer
    /// never fires.
    /// @param interval seconds
    /// @param repeats whether it fires again and again, rather than once
    /// @param fire called on every firing
    virtual TimerId start_timer(double interval, bool repeats, std::function<void()> fire) = 0;
    /// No effect on a timer that has ended.
    virtual void stop_timer(TimerId timer) = 0;
    /// Next firing, in seconds of now(); 0 for a timer that has ended.
    virtual double due(TimerId timer) const = 0;
    /// Queues work as an event of its own, after everything posted earlier.
    virtual void post(std::function<void()> work) = 0;
    /// Destroys every timer and all posted work without running them.
    virtual void clear() = 0;
};

// ---------------------------------------------------------------------------------------------------------- Video

/// How far a player has loaded its video; bit flags.
enum MPMovieLoadState : int {
    MPMovieLoadStateUnknown = 0,
    MPMovieLoadStatePlayable = 1,
    MPMovieLoadStatePlaythroughOK = 2,
    MPMovieLoadStateStalled = 4,
};
/// Both sets of flags.
constexpr MPMovieLoadState operator|(MPMovieLoadState a, MPMovieLoadState b)
{
    return static_cast<MPMovieLoadState>(static_cast<int>(a) | static_cast<int>(b));
}

/// What a player does.
enum MPMoviePlaybackState : int {
    MPMoviePlaybackStateStopped = 0,
    MPMoviePlaybackStatePlaying = 1,
    MPMoviePlaybackStatePaused = 2,
    MPMoviePlaybackStateInterrupted = 3,
    MPMoviePlaybackStateSeekingForward = 4,
    MPMoviePlaybackStateSeekingBackward = 5,
};

/// Why a player finished.
enum MPMovieFinishReason : int {
    MPMovieFinishReasonPlaybackEnded = 0,
    MPMovieFinishReasonPlaybackError = 1,
    MPMovieFinishReasonUserExited = 2,
};

/// How a picture fills its view: None and AspectFit show it whole, AspectFill crops it, Fill stretches it.
enum MPMovieScalingMode : int {
    MPMovieScalingModeNone = 0,
    MPMovieScalingModeAspectFit = 1,
    MPMovieScalingModeAspectFill = 2,
    MPMovieScalingModeFill = 3,
};

/// A player's own controls.
enum MPMovieControlStyle : int { MPMovieControlStyleNone = 0, MPMovieControlStyleEmbedded = 1 };
/// Whether a player repeats its video.
enum MPMovieRepeatMode : int { MPMovieRepeatModeNone = 0, MPMovieRepeatModeOne = 1 };
/// Where a video comes from.
enum MPMovieSourceType : int { MPMovieSourceTypeUnknown = 0, MPMovieSourceTypeFile = 1 };

/// Whether an audio interruption, such as a call, begins or ends.
enum AVAudioSessionInterruptionType : int {
    AVAudioSessionInterruptionTypeEnded = 0,
    AVAudioSessionInterruptionTypeBegan = 1
};

/// Playback and drawing options; the defaults are those of a new player.
struct PlayerSettings {
    /// Whether it starts playing as soon as it has loaded enough.
    bool should_autoplay = true;
    /// How the picture fills the video view.
    MPMovieScalingMode scaling_mode = MPMovieScalingModeAspectFit;
    /// Recorded in snapshots only: players neither draw controls, nor change the screen, nor repeat a video.
    /// @{
    bool fullscreen = false;
    MPMovieControlStyle control_style = MPMovieControlStyleEmbedded;
    MPMovieRepeatMode repeat_mode = MPMovieRepeatModeNone;
    MPMovieSourceType source_type = MPMovieSourceTypeUnknown;
    /// @}
};

/// Receives a player's events, each as an event of its own. The player's getters already return the new state when the
/// listener is called.
class PlayerListener
{
public:
    virtual ~PlayerListener() = default;
    /// PlayerEngine::load_state() has changed.
    virtual void load_state_changed() = 0;
    /// PlayerEngine::playback_state() has changed.
    virtual void playback_state_changed() = 0;
    /// Playback has ended, for this reason.
    virtual void finished(MPMovieFinishReason reason) = 0;
    /// The first picture of the video can be seen, whether it plays yet or not. At most once per player; the controller
    /// does not depend on it.
    virtual void first_picture() {}
};

/// Plays one video. Every implementation follows these rules:
/// - Loading starts on creation. The duration is known before the load state is reported as MPMovieLoadStatePlayable
///   alone. A second report adds MPMovieLoadStatePlaythroughOK. After that, with autoplay or a pending play(), it
///   starts playing and reports it.
/// - pause() before the video has loaded cancels a pending play(), but not autoplay.
/// - A reported duration never changes.
/// - A buffer underrun sets the load state to Stalled and the playback state to Interrupted, each reported. Recovery
///   sets the load state to Playable and PlaythroughOK and, unless play() or pause() was called meanwhile, the playback
///   state to Playing.
/// - At the end the time equals the duration exactly; the player reports the playback state Paused, then finished with
///   PlaybackEnded. A later play() restarts at 0. A seek cancels the end, and play() continues from the new position.
/// - Seeks are clamped to 0 and the duration.
/// - A failure reports the playback state Stopped, then finished with PlaybackError. A later play() reloads the video,
///   resumes at the position of the failure and reports Playing; a seek before that moves the position without a
///   report. If such a play() fails too, that is reported in the same way, at most MostVainPlays times; further calls
///   of play() have no effect.
/// - A null or unplayable address fails once; play() has no effect afterwards.
///
/// The destructor stops playback and all reports. An engine is never destroyed inside one of its own reports.
class PlayerEngine
{
public:
    /// Number of consecutive calls of play() that may fail after a failure; the player then gives up. A listener may
    /// call play() on every failure; without a bound the two would loop forever.
    static constexpr int MostVainPlays = 3;

    virtual ~PlayerEngine() = default;
    /// Replaces all settings; allowed at any time.
    virtual void apply(const PlayerSettings& settings) = 0;
    /// Starts or resumes playback; a video that has not loaded yet plays once it has.
    virtual void play() = 0;
    /// Pauses playback at the current position.
    virtual void pause() = 0;
    /// Moves the position.
    /// @param time seconds from the start
    virtual void seek(double time) = 0;
    /// Seconds from the start; 0 before anything was played.
    virtual double current_time() const = 0;
    /// Seconds; 0 while unknown.
    virtual double duration() const = 0;
    /// MPMovieLoadStateUnknown before the first report.
    virtual MPMovieLoadState load_state() const = 0;
    /// MPMoviePlaybackStateStopped before the first report.
    virtual MPMoviePlaybackState playback_state() const = 0;
    /// The pictures that the platform's display draws; null for a player without pictures.
    virtual PictureSource* pictures() { return nullptr; }
};

/// Creates players.
class PlayerFactory
{
public:
    virtual ~PlayerFactory() = default;
    /// Creates a player for a URL or a file path. A null source fails like a missing video. The listener must outlive
    /// the engine.
    virtual std::unique_ptr<PlayerEngine> make_player(const NSURL& source, PlayerListener& listener) = 0;
    /// Pauses every player that exists, as the platform does when the viewer leaves the application. Each reports it;
    /// it stays paused until play() is called.
    virtual void leave_app() {}
};

/// The device's output volume. The viewer can change it too.
class OutputVolume
{
public:
    virtual ~OutputVolume() = default;
    /// 0 to 1.
    virtual float value() const = 0;
    /// Changes are reported through Platform::output_volume_changed, as an event of its own.
    /// @param volume 0 to 1
    virtual void set_value(float volume) = 0;
    /// Whether a volume view has a slider on this device.
    virtual bool has_slider() const = 0;
};

// ----------------------------------------------------------------------------------------------------------- Page

/// A message from the page's script: a command name and its arguments.
struct ScriptMessage {
    std::string command; ///< Chosen by the page; any text.
    NSArray arguments;   ///< Chosen by the page; any values.
};

/// The reply to a script message.
struct ScriptAnswer {
    /// Null on success; otherwise a one-line description of the error.
    NSString error;
    /// The command's result; null when it has none.
    Value value;
};

/// What a page's author wants to know: a line of its console, or an error in it. Texts are chosen by the page.
struct PageReport {
    /// What is reported.
    enum class Kind : std::uint8_t {
        Debug,     ///< console.debug().
        Log,       ///< console.log().
        Info,      ///< console.info().
        Warning,   ///< console.warn().
        Error,     ///< console.error(), or a failed console.assert().
        Exception, ///< An exception that no script has caught.
        Rejection, ///< A rejected promise that no script handles.
        Resource,  ///< A resource that did not load.
    };

    Kind kind{};         ///< What is reported.
    std::string message; ///< The console's text, the error, or why the resource did not load.
    std::string file;    ///< Address of the script, or of the resource; empty when unknown.
    /// Line of the script, from 1; absent when unknown, and for a resource.
    std::optional<std::int64_t> line = {};
    /// HTTP status of a resource; absent without an answer.
    std::optional<std::int64_t> status = {};
    /// Number of reports that this one represents: earlier ones may have been dropped.
    std::int64_t times = 1;
};

/// Receives a page's events, each as an event of its own. should_start_load and message are synchronous queries.
class WebListener
{
public:
    virtual ~WebListener() = default;
    /// A load has started.
    virtual void did_start_load() = 0;
    /// A load has finished.
    virtual void did_finish_load() = 0;
    /// Returns whether a navigation started by the page or the viewer may proceed.
    /// @param address the destination; null when it is malformed
    /// @param navigation_type UIWebViewNavigationType: 0 a link was followed, 5 anything else
    virtual bool should_start_load(const NSURL& address, int navigation_type) = 0;
    /// Handles a message from the page's script.
    virtual ScriptAnswer message(const ScriptMessage& message) = 0;
    /// A load by address, or one started by the page or the viewer, failed, for the reason given as one line; the
    /// previous page stays. Reported instead of did_finish_load.
    virtual void did_fail_load(const std::string&) {}
    /// A field of page_state() changed. The start and the end of a load are reported by their own events.
    virtual void page_state_changed() {}
    /// The engine denied the page something that no page is granted.
    /// @param what "window", "download", "message", "navigation" or "request"
    /// @param detail the address concerned; for "message" the error text
    virtual void refused(const std::string& what, const std::string& detail)
    {
        static_cast<void>(what);
        static_cast<void>(detail);
    }
    /// The page has written to its console, or has an error. The engine limits the rate.
    virtual void reported(const PageReport& report) { static_cast<void>(report); }
    /// The page's web process ended: it crashed, was terminated for exceeding a limit, or could not start. The page no
    /// longer exists; the ad continues.
    /// @param reason one line for the trace
    virtual void died(const std::string& reason) = 0;
    /// The page's script stopped responding, or responds again. Reported only while WebEngine::watch_responsiveness is
    /// on. A page counts as responsive until the opposite is reported, and a new page starts as responsive.
    virtual void responsiveness_changed(bool responds) { static_cast<void>(responds); }
};

/// The page state that a browser displays.
struct PageState {
    /// Address of the page shown or being loaded; null before the first.
    NSURL address = {};
    /// The page's title; empty when it has none.
    std::string title = {};
    /// Whether every resource of the page was loaded over an authenticated, encrypted connection.
    bool secure = false;
    /// Whether a load is in progress.
    bool loading = false;
    /// Estimated progress of the load, 0 to 1.
    double progress = 0;
    /// Whether the page has content to display, at least in part.
    bool has_content = false;
    /// Whether there is an earlier page.
    bool can_go_back = false;
    /// Whether there is a later page, which the viewer has left by going back.
    bool can_go_forward = false;
};

/// What a touch of a page reaches.
struct PageTouch {
    /// Where the page is touched, in points of its view.
    CGPoint point;
    /// The element at that point: its id ("#yes"), or else its tag and first class ("a.shop"). Empty where no element
    /// is known.
    std::string element = {};
};

/// The role of a page in its web view.
enum class PageKind {
    /// A creative: has access to the script library and the bridge.
    Creative,
    /// A page in the browser: has neither, and shares no data with creatives.
    Browsed,
};

/// The engine of one web view. It runs one load at a time.
class WebEngine
{
public:
    virtual ~WebEngine() = default;
    /// Loads a page from its source. Null HTML (a body that was not valid UTF-8) shows nothing, but start and end of
    /// the load are reported as usual.
    /// @param html source of the page
    /// @param base address that relative references resolve against; may be null
    virtual void load_html(const NSString& html, const NSURL& base) = 0;
    /// Loads an http or https address without consulting should_start_load. Ignores any other address.
    virtual void load_address(const NSURL& address) = 0;
    /// No effect without an earlier page.
    virtual void go_back() = 0;
    /// No effect without a later page.
    virtual void go_forward() = 0;
    /// Loads the address of page_state() again, also after a failed load. No effect before the first address.
    virtual void reload() = 0;
    /// The page's current state.
    virtual PageState page_state() const = 0;
    /// Calls listeners in the page's script, in the given order and after every earlier call.
    /// @param event name of the event
    /// @param callbacks callback ids chosen by the script
    /// @param data a mapping; null for no data
    virtual void call_listeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) = 0;
    /// Address of the page shown; null before the first.
    virtual NSURL current_address() const = 0;
    /// Whether a page wider than the view is shrunk to fit.
    virtual void set_scales_page_to_fit(bool scales) = 0;
    /// View points per page point; less than 1 for a page shrunk to fit.
    virtual double page_scale() const { return 1; }
    /// Turns the responsiveness watch on or off; a new engine has it off. Turning it off marks an unresponsive page as
    /// responsive again.
    virtual void watch_responsiveness(bool watch) { static_cast<void>(watch); }
    /// Finds the element that a CSS selector names, for programs that test ads, and scrolls it into view.
    /// @param selector as in CSS; one that is malformed names no element
    /// @param found called once, at once or later, unless the engine is destroyed: with its centre; absent without one
    virtual void find_element(const std::string& selector, std::function<void(std::optional<PageTouch>)> found)
    {
        static_cast<void>(selector);
        found(std::nullopt);
    }
    /// Finds what a touch would reach, for programs that test ads. The element is unknown in an engine without a
    /// document, and in a page that does not answer.
    /// @param point in points of the view
    /// @param found called once, as find_element() does
    virtual void aim_touch(CGPoint point, std::function<void(PageTouch)> found) { found({point}); }
    /// Touches the element that aim_touch() has found last: its script receives the events of a click, and its default
    /// action runs.
    virtual void touch_page() {}
    /// The widget that the platform's display shows; null for an engine that draws nothing.
    virtual WidgetSource* widget_source() { return nullptr; }
};

/// Creates web engines.
class WebEngineFactory
{
public:
    virtual ~WebEngineFactory() = default;
    /// The listener must outlive the engine.
    virtual std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) = 0;
};

// -------------------------------------------------------------------------------------------------------- Network

/// The result of a fetch.
struct FetchAnswer {
    /// Whether the address was fetched.
    bool ok = false;
    /// Description of the error when not ok.
    std::string error;
    /// The bytes received; meaningful only when ok.
    std::string body;
    /// Address of the body after redirects.
    std::string final_address;
};

/// The purpose of a fetch; decides whether it may be retried.
enum class FetchKind {
    /// A document that the ad shows; may be retried once after a server failure.
    Page,
    /// A request that its server counts: sent at most once.
    Tracker,
    /// A picture; never retried.
    Image,
};

/// Fetches pages, trackers and pictures.
class Fetcher
{
public:
    virtual ~Fetcher() = default;
    /// Starts a fetch. Calls answer exactly once, as an event of its own; an address that cannot be fetched gives an
    /// answer that is not ok.
    virtual void fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer) = 0;
    /// Fetches an address synchronously, as a picture. Blocks the main thread, at most for the platform's time-out.
    virtual FetchAnswer fetch_now(const std::string& address) = 0;
};

// ---------------------------------------------------------------------------------------------- Text and pictures

/// A font by family and size in points.
struct FontSpec {
    /// Name of the family.
    std::string family = "Arial";
    /// In points.
    double size = 17;
    /// Whether family and size are equal.
    friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

/// Measures text with the fonts of the display.
class TextMeasurer
{
public:
    virtual ~TextMeasurer() = default;
    /// Size of a text in fractional points. Lines break at character boundaries; the result is clipped to the box. A
    /// null text measures 0 by 0. The box is in points.
    virtual CGSize measure(const NSString& text, const FontSpec& font, CGSize box) = 0;
};

/// A decoded picture in the platform's own representation.
class DecodedImage
{
public:
    virtual ~DecodedImage() = default;
};

/// Decodes pictures.
class ImageDecoder
{
public:
    virtual ~ImageDecoder() = default;
    /// Decodes PNG or JPEG; null when the bytes are neither, or null.
    virtual std::shared_ptr<const DecodedImage> decode(const NSData& bytes) = 0;
};

// --------------------------------------------------------------------------------------------------------- Device

/// Device properties that are constant during a session.
struct DeviceFacts {
    /// Size of the main screen in points, in portrait; absent without a main screen.
    std::optional<CGSize> screen = CGSize{375, 812};
    /// Overrides the computed size of the current screen, in points; absent: it is derived from the main screen and the
    /// orientation.
    std::optional<CGSize> current_screen;
    /// Whether the device is a phone rather than a tablet.
    bool phone = true;
    /// Whether the system is at least version 8, which the landscape layouts depend on.
    bool ios8 = true;
    /// The device identifier (IMEI); null when there is none.
    NSString imei = "356938035643809";
    /// The host application's display name; null when it has none.
    NSString display_name = "Host App";
    /// Whether texts can be sent; absent when there is no message composer.
    std::optional<bool> can_send_text = true;
};

/// The device: its constant properties, its orientation, and the applications that open addresses.
class Device
{
public:
    virtual ~Device() = default;
    /// The constant properties.
    virtual const DeviceFacts& facts() const = 0;
    /// How the device is held, or the orientation that was forced since it was last turned.
    virtual UIDeviceOrientation orientation() const = 0;
    /// Overrides orientation() until the device is turned.
    virtual void force_orientation(UIDeviceOrientation orientation) = 0;
    /// Orientation of the interface.
    virtual UIInterfaceOrientation status_bar_orientation() const = 0;
    /// Whether the status bar is hidden.
    virtual bool status_bar_hidden() const = 0;
    /// Whether an application is registered for the address.
    virtual bool can_open(const NSURL& address) = 0;
    /// Opens an address in the application registered for it. No effect for a null address, or without an application.
    virtual void open(const NSURL& address) = 0;
    /// Opens an address for a screen that waits for the viewer to return (a message composer, a store).
    /// @param address of any scheme
    /// @param done called at most once, as an event of its own: when the viewer has returned, when the device cannot
    ///             detect the return, or when nothing could be opened
    virtual void open_and_wait(const NSURL& address, std::function<void()> done) = 0;
};

/// Local copies of videos.
class VideoCacheStore
{
public:
    virtual ~VideoCacheStore() = default;
    /// Path of the complete local copy of an address; null without a copy, and for a null address.
    virtual NSString path_for(const NSString& address) = 0;
};

/// Translates the program's own texts into the viewer's language.
class Translation
{
public:
    virtual ~Translation() = default;
    /// The translation of a text; the text itself when it has no translation.
    /// @param text in English, not null
    virtual std::string translate(const char* text) = 0;
    /// The translation for a number, in the plural form it requires. "%d" in the text is not replaced.
    virtual std::string translate(const CountedText& text, unsigned long number) = 0;
};

/// The viewer's calendar. An event is handed over; the viewer then decides whether to store it, and the decision is not
/// reported back.
class Calendar
{
public:
    virtual ~Calendar() = default;
    /// Whether a calendar accepts events.
    virtual bool available() = 0;
    /// Hands an event over.
    /// @return null on success; otherwise a one-line reason
    virtual NSString add(const CalendarEvent& event) = 0;
};

// -------------------------------------------------------------------------------------------------------- Display

/// Draws the view tree.
class Display
{
public:
    virtual ~Display() = default;
    /// Called after every visible change. A display draws at most once per frame, however often this is called.
    virtual void needs_display() = 0;
};

} // namespace qoro
