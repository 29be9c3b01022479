#include "app/Play.h"

#include "app/FileWatch.h"
#include "app/PlayInput.h"
#include "app/TraceFile.h"
#include "desktop/DesktopPlatform.h"
#include "desktop/glib/Owned.h"
#include "desktop/net/Reach.h"
#include "desktop/screen/DisplayWatch.h"
#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"
#include "formats/AdAddresses.h"
#include "formats/AdFile.h"
#include "formats/AdInput.h"
#include "formats/AdRemarks.h"
#include "formats/InputError.h"
#include "formats/LogLines.h"
#include "host/OpenedAd.h"
#include "host/Rehearsal.h"
#include "host/SessionControls.h"
#include "host/desktop/DesktopTag.h"
#include "host/desktop/ServedAd.h"
#include "kit/NetworkZone.h"
#include "kit/StandIn.h"
#include "platform/Numbers.h"
#include "record/RecordFile.h"
#include "record/Recording.h"
#include "record/TapedPlatform.h"

#include <gdk/gdkkeysyms.h>
#include <glib-unix.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <future>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <variant>

namespace qoro
{

namespace
{
constexpr const char* Title = translatable("Qoro Video Ad: ←→ turn, ↑↓ volume, H leave and return, Esc close");
constexpr const char* Help =
    translatable("←→ turn the device   ↑↓ volume   H leave the app and return   Esc close the ad");
constexpr float VolumeStep = 0.05F;
/// Signals that close the ad in order.
constexpr std::array Signals{SIGINT, SIGTERM, SIGHUP};
/// Seconds for trackers that are still on their way when the ad has closed.
constexpr double LastRequestsPatience = 2;
constexpr double LastRequestsInterval = 0.01;
/// Seconds that a page always has to receive the close event.
constexpr double LastNews = 0.25;
/// Seconds between two flushes of a recording: less than the second that a crash may lose.
constexpr double FlushInterval = 0.5;

/// Writes the log to standard error.
/// @param from absent for no line
LogSink log_lines(std::optional<ZulixLogTag> from)
{
    if (!from)
        return nullptr;
    return log_writer(*from, "", [](std::string_view line) { std::cerr << line << std::flush; });
}

/// One playing of one ad.
class Player final : public SessionControls, public EventSink
{
public:
    Player(const PlayOptions& options, PlayInput input, std::optional<TraceFile> trace_file);
    ~Player() override;

    /// @return the program's exit status
    int run();

private:
    // What the steps ask for.
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange& change) override;

    void receive(const Event& event) override;

    void connect_window();
    void follow_failures();
    void report(const std::string& line);
    void report_content(const std::string& address, const std::string& what);
    bool is_missing(const std::string& place) const;
    void video_failed(const std::string& reason);
    void duration_known(double duration);
    void open();
    void open_ad(const HostSetup& host, Rehearsal rehearsal);
    void open_tag(HostSetup host, Rehearsal rehearsal);
    bool leave_screen();
    void watch_files();
    void served(const AdServerHit& hit);
    void reload();
    void schedule();
    void at(double seconds, std::function<void()> event);
    bool key_pressed(unsigned keyval);
    void leave_or_return(bool leaves);
    void take_snapshot(double seconds);

    void ended(const AdOutcome& outcome);
    void tag_ended(const TagOutcome& outcome);
    void close_ad(ClosedBy closer);
    void end();
    void display_lost();
    void fail(const std::string& what);

    static gboolean signalled(gpointer self);

    void record();
    void begin_recording(const HostSetup& host);
    void by_host(std::string_view what, const std::function<void()>& work, const Value& of = {});
    void outside(const std::function<void()>& work);
    LineSink trace_sink() const;

    const PlayOptions& options_;
    PlayInput input_;
    const std::optional<TraceFile> trace_file_;
    /// Absent unless the session is recorded; otherwise the ad's platform.
    /// @{
    std::optional<RecordFile> record_file_;
    std::optional<TapedPlatform> taped_;
    std::optional<Recorder> recorder_;
    std::optional<TapedControls> taped_controls_;
    /// @}
    DesktopPlatform platform_;
    /// The ad's platform.
    Platform& ads_;
    std::optional<Trace> trace_;
    std::unique_ptr<ServedAd> served_;
    /// Receives the last trackers of the ad that the present one has replaced.
    std::unique_ptr<ServedAd> served_before_;
    /// The host chooses the store, which may be in a private network.
    std::optional<NamedHosts> store_;
    std::unique_ptr<OpenedAd> opened_;
    /// Instead of served_ and opened_, for a VAST tag.
    /// @{
    std::unique_ptr<DesktopTag> tag_hosts_;
    std::unique_ptr<OpenedTag> tag_;
    /// @}
    /// Null unless the ad opens again when its files change.
    std::unique_ptr<FileWatch> files_;
    std::array<SourceId, std::size(Signals)> signals_;
    const DisplayWatch display_watch_{[this] { display_lost(); }};
    bool is_away_ = false;
    /// Whether the duration of the ad's own video is known.
    bool duration_known_ = false;
    /// The ad before the session changes it, with absolute addresses.
    std::shared_ptr<const QoroVideoAd> authored_;
    /// Lines about the ad, each of which is written once.
    std::set<std::string> reported_;
    bool ends_ = false;
    /// Something that was asked for could not be done.
    bool has_failed_ = false;
};

Player::Player(const PlayOptions& options, PlayInput input, std::optional<TraceFile> trace_file)
    : options_(options), input_(std::move(input)), trace_file_(std::move(trace_file)),
      taped_(options.record_file.empty() ? std::nullopt : std::optional<TapedPlatform>(std::in_place)),
      platform_(input_.platform, taped_ ? &*taped_ : nullptr),
      ads_(taped_ ? static_cast<Platform&>(*taped_) : platform_)
{
    if (taped_)
        record();
    if (trace_file_)
        trace_.emplace(recorder_ ? static_cast<const MainLoop&>(recorder_->clock()) : platform_.loop(),
                       trace_file_->format(), trace_sink());
    ads_.set_event_sink(this);
    if (options_.watch)
        files_ = std::make_unique<FileWatch>([this] { reload(); });
    for (std::size_t n = 0; n < signals_.size(); ++n)
        signals_[n].reset(g_unix_signal_add(Signals[n], signalled, this));
}

Player::~Player()
{
    if (recorder_)
        recorder_->end();
    ads_.set_event_sink(nullptr);
    files_.reset();
    opened_.reset();
    tag_.reset();
    served_.reset();
    served_before_.reset();
    platform_.loop().clear();
}

int Player::run()
{
    for (const std::string& line : input_.remarks)
        std::cerr << "qoro-ad: " << line << std::endl;
    for (const std::string& line : input_.missing_files) {
        std::cerr << "qoro-ad: " << line << std::endl;
        has_failed_ |= !options_.lenient;
    }
    connect_window();
    follow_failures();
    platform_.display().show();
    platform_.loop().restart_clock();
    open();
    schedule();
    platform_.loop().run();
    const bool trace_failed = trace_file_ && trace_file_->has_failed();
    if (record_file_)
        record_file_->flush();
    const bool record_failed = record_file_ && record_file_->has_failed();
    return has_failed_ || trace_failed || record_failed ? 1 : 0;
}

void Player::open()
{
    duration_known_ = false;
    reported_.clear();
    authored_.reset();
    store_.reset();
    if (!input_.host.store_page.empty())
        store_.emplace(std::vector{store_page_of_id(input_.host.store_page).absoluteString().text()});
    platform_.set_origin_headers(input_.origins);
    HostSetup host = input_.host;
    host.log = log_lines(options_.log);
    const auto prepared = [this] {
        outside([this] {
            // The controller forces the device upright as it is made.
            if (input_.orientation != platform_.device().orientation())
                platform_.device().hold(input_.orientation);
            platform_.device().follow_sensor();
        });
    };
    SessionControls& controls = taped_controls_ ? static_cast<SessionControls&>(*taped_controls_) : *this;
    Rehearsal rehearsal{input_.steps, controls, prepared};
    if (input_.tag)
        open_tag(std::move(host), std::move(rehearsal));
    else
        open_ad(host, std::move(rehearsal));
}

void Player::open_ad(const HostSetup& host, Rehearsal rehearsal)
{
    served_ = std::make_unique<ServedAd>(input_.ad, input_.folder, [this](const AdServerHit& hit) { served(hit); });
    authored_ = copy_of(*served_->ad());
    for (const auto& [address, path] : input_.copies)
        platform_.add_video_copy(address_on_server(address, served_->base()), path);
    watch_files();
    if (recorder_)
        begin_recording(host);
    by_host(
        "open",
        [&] {
            opened_ = std::make_unique<OpenedAd>(
                ads_, served_->ad(), [this](const AdOutcome& outcome) { ended(outcome); }, host, std::move(rehearsal));
        },
        static_cast<int>(ads_.shared<OpenNetworks>().open));
}

void Player::open_tag(HostSetup host, Rehearsal rehearsal)
{
    for (const auto& [address, path] : input_.copies)
        platform_.add_video_copy(address, path);
    watch_files();
    tag_hosts_ = std::make_unique<DesktopTag>(*input_.tag);
    TagOptions options = tag_hosts_->options();
    options.resolver.band.width = input_.band_pixels;
    tag_ = std::make_unique<OpenedTag>(
        ads_, *input_.tag, [this](const TagOutcome& outcome) { tag_ended(outcome); }, std::move(host),
        std::move(options), std::move(rehearsal));
}

bool Player::leave_screen()
{
    if (!opened_)
        return tag_ && tag_->leave_screen();
    bool left = false;
    by_host("leaveScreen", [&] { left = opened_->leave_screen(); });
    return left;
}

/// The files that the options name. Those of the ad's folder are added as they are requested, so that files that this
/// program or another writes there do not count.
void Player::watch_files()
{
    if (!files_)
        return;
    for (const std::string& file : {options_.ad_file, options_.host_file, options_.steps_file})
        if (!file.empty())
            files_->add(file);
    for (const auto& [address, path] : input_.copies)
        files_->add(path);
}

/// On the server's thread.
void Player::served(const AdServerHit& hit)
{
    if (hit.tracker) {
        platform_.loop().post([this, hit] { ads_.emit(event::ServerHit{hit.method, hit.target}); });
    } else if (options_.watch) {
        const std::string path =
            take_text(g_uri_unescape_string(hit.target.substr(0, hit.target.find('?')).c_str(), "/"));
        platform_.loop().post([this, path] {
            if (files_ && !path.empty())
                files_->add(input_.folder + path);
        });
    }
}

/// Opens the ad again with the present content of its files. While they are faulty, the ad stays as it is.
void Player::reload()
{
    if (ends_)
        return;
    std::unique_ptr<PlayInput> fresh;
    try {
        fresh = std::make_unique<PlayInput>(read_play_input(options_));
    } catch (const InputError& error) {
        std::cerr << "qoro-ad: " << error.what() << std::endl;
        return;
    }
    opened_.reset();
    tag_.reset();
    remove_stand_ins(ads_);
    input_ = std::move(*fresh);
    for (Step& step : input_.steps)
        step.at += platform_.loop().now();
    served_before_ = std::move(served_);
    open();
}

void Player::connect_window()
{
    Screen& screen = platform_.display();
    screen.set_title(platform_.translation().translate(Title));
    screen.mark_safe_areas(input_.portrait_insets, input_.landscape_insets);
    screen.set_help(platform_.translation().translate(Help));
    screen.on_key = [this](unsigned keyval, unsigned) { return key_pressed(keyval); };
    screen.on_close = [this] { close_ad(ClosedBy::Viewer); };
    screen.on_iconified = [this](bool iconified) { leave_or_return(iconified); };
}

// ------------------------------------------------------------------------------------------------------- what comes

void Player::at(double seconds, std::function<void()> event)
{
    platform_.loop().start_timer(seconds - platform_.loop().now(), false, std::move(event));
}

void Player::schedule()
{
    for (const double seconds : options_.snapshots)
        at(seconds, [this, seconds] { take_snapshot(seconds); });
    if (options_.seconds)
        at(*options_.seconds, [this] { close_ad(ClosedBy::Host); });
}

void Player::change_device(const DeviceChange& change)
{
    platform_.device().change({.orientation = change.orientation,
                               .status_bar_orientation = change.status_bar_orientation,
                               .status_bar_hidden = change.status_bar_hidden});
    if (change.output_volume)
        platform_.volume().set_value(*change.output_volume);
}

bool Player::key_pressed(unsigned keyval)
{
    // Escape always closes, also while a text field has the focus.
    if (keyval != GDK_KEY_Escape && platform_.display().is_written_into())
        return false;
    switch (keyval) {
    case GDK_KEY_Left:
        platform_.device().turn_counterclockwise();
        return true;
    case GDK_KEY_Right:
        platform_.device().turn_clockwise();
        return true;
    case GDK_KEY_Up:
        platform_.change_volume(VolumeStep);
        return true;
    case GDK_KEY_Down:
        platform_.change_volume(-VolumeStep);
        return true;
    case GDK_KEY_h:
    case GDK_KEY_H:
        leave_or_return(!is_away_);
        return true;
    case GDK_KEY_Escape:
        if (!leave_screen())
            close_ad(ClosedBy::Viewer);
        return true;
    default:
        return false;
    }
}

void Player::leave_or_return(bool leaves)
{
    if (std::exchange(is_away_, leaves) == leaves)
        return;
    if (leaves)
        platform_.leave_app();
    else
        platform_.return_to_app();
}

void Player::take_snapshot(double seconds)
{
    const auto path = std::filesystem::path(options_.out_folder) / ("snapshot-" + shortest_text(seconds) + ".png");
    const std::string problem = platform_.display().snapshot_png(path.string());
    if (!problem.empty())
        fail(path.string() + ": the picture could not be written: " + problem);
}

// -------------------------------------------------------------------------------------------------------- recording

/// Puts the recording between the ad and the platform. It begins with the ad.
void Player::record()
{
    record_file_.emplace(options_.record_file);
    recorder_.emplace(*taped_, RecordSink{[this](std::string_view head) { record_file_->begin(head); },
                                          [this](std::string_view entry) { record_file_->add(entry); }});
    taped_controls_.emplace(*recorder_, this);
    taped_->record_to(*recorder_, platform_, [this] { platform_.leave_app(); });
}

void Player::begin_recording(const HostSetup& host)
{
    DesktopDevice& device = platform_.device();
    const DeviceSetup setup{.facts = device.facts(),
                            .orientation = input_.orientation,
                            .status_bar_orientation = device.status_bar_orientation(),
                            .status_bar_hidden = device.status_bar_hidden(),
                            .output_volume = platform_.volume().value(),
                            .volume_slider = platform_.volume().has_slider(),
                            .calendar = platform_.calendar().available()};
    const bool redacts = !options_.record_identifiers;
    recorder_->begin(recording_head(setup, host, *served_->ad(), input_.steps, redacts),
                     redacts ? Redaction(setup.facts, host) : Redaction(), platform_.loop());
    recorder_->forward_to(this);
    platform_.loop().start_timer(FlushInterval, true, [this] { record_file_->flush(); });
}

/// What the host does to the ad, rather than the ad itself or the machine.
void Player::by_host(std::string_view what, const std::function<void()>& work, const Value& of)
{
    if (recorder_)
        recorder_->host(what, work, of);
    else
        work();
}

/// Work of the machine inside an event of the ad.
void Player::outside(const std::function<void()>& work)
{
    if (recorder_)
        recorder_->outside(work);
    else
        work();
}

/// Of a recorded session the trace is redacted as the recording is, so that a replay gives the same.
LineSink Player::trace_sink() const
{
    if (!recorder_)
        return trace_file_->sink();
    return [sink = trace_file_->sink(), this](std::string_view line) { sink(recorder_->redaction().of(line)); };
}

// ------------------------------------------------------------------------------------------------------------ the end

void Player::receive(const Event& event)
{
    if (trace_)
        trace_->receive(event);
    if (const auto* page = std::get_if<event::PageFailed>(&event))
        report_content(std::string(page->url.view()), std::string(page->reason.view()));
    else if (const auto* video = std::get_if<event::PlayerFailed>(&event))
        video_failed(std::string(video->reason.view()));
}

void Player::follow_failures()
{
    platform_.players().options.on_duration = [this](double duration) { duration_known(duration); };
    platform_.fetcher().on_image_failure = [this](const std::string& address, const std::string& reason) {
        report_content(address, reason);
    };
}

void Player::report(const std::string& line)
{
    if (reported_.insert(line).second)
        std::cerr << "qoro-ad: " << line << std::endl;
}

/// Whether a file of the ad's folder is missing, which has been said at the start.
/// @param place "ad.json: /strWebViewUrl: "
bool Player::is_missing(const std::string& place) const
{
    return std::ranges::any_of(input_.missing_files,
                               [&place](const std::string& line) { return line.starts_with(place); });
}

/// Names the ad's property whose content did not load.
void Player::report_content(const std::string& address, const std::string& what)
{
    std::string place;
    if (authored_)
        visit_addresses(*authored_, [&](AdAddressUse use, const std::string& path, const std::string& one) {
            if (use == AdAddressUse::Content && place.empty() && one == address)
                place = options_.ad_file + ": " + path + ": ";
        });
    if (place.empty() || !is_missing(place))
        report(place + address + " did not load: " + what);
}

void Player::video_failed(const std::string& reason)
{
    if (!is_missing(options_.ad_file + ": /strVideoUrl: "))
        report("the video has failed: " + reason);
}

void Player::duration_known(double duration)
{
    // Later players are those of the page's next videos and of replays.
    if (!authored_ || std::exchange(duration_known_, true))
        return;
    for (const std::string& line : remarks_on_duration(*authored_, options_.ad_file, duration))
        report(line);
}

void Player::ended(const AdOutcome& outcome)
{
    if (outcome.error)
        fail("nothing was shown: " + *outcome.error);
    // The ad may open again.
    if (!files_)
        end();
}

void Player::tag_ended(const TagOutcome& outcome)
{
    if (outcome.error)
        fail(options_.ad_file + ": no ad: " + outcome.why + " (VAST error " + std::to_string(*outcome.error) + ")");
    const bool shown = std::ranges::any_of(outcome.ads, [](const AdOutcome& ad) { return !ad.error; });
    for (const AdOutcome& ad : outcome.ads) {
        if (ad.error && shown)
            std::cerr << "qoro-ad: an ad of the tag was not shown: " << *ad.error << std::endl;
        else if (ad.error)
            fail("nothing was shown: " + *ad.error);
    }
    if (!files_)
        end();
}

void Player::close_ad(ClosedBy closer)
{
    if (ends_) {
        platform_.loop().quit();
        return;
    }
    if (opened_)
        by_host(
            "close", [&] { opened_->close(closer); }, static_cast<int>(closer));
    if (tag_)
        tag_->close(closer);
    end();
}

void Player::end()
{
    if (std::exchange(ends_, true))
        return;
    platform_.loop().start_timer(LastRequestsPatience, false, [this] { platform_.loop().quit(); });
    platform_.loop().start_timer(LastRequestsInterval, true, [this, closed = platform_.loop().now()] {
        if (platform_.fetcher().pending() == 0 && platform_.loop().now() - closed >= LastNews)
            platform_.loop().quit();
    });
}

/// Nothing more can be shown, and GTK must not be asked for anything: the ad is closed, its last requests go out, and
/// the program ends.
void Player::display_lost()
{
    fail("the display is gone, and the ad was closed");
    close_ad(ClosedBy::Host);
    platform_.loop().run_alone([this] { return platform_.fetcher().pending() == 0; }, LastRequestsPatience);
    platform_.loop().quit();
}

void Player::fail(const std::string& what)
{
    has_failed_ = true;
    std::cerr << "qoro-ad: " << what << std::endl;
}

gboolean Player::signalled(gpointer self)
{
    static_cast<Player*>(self)->close_ad(ClosedBy::Host);
    return G_SOURCE_CONTINUE;
}

// ------------------------------------------------------------------------------------------------------- the command

void make_folder(const std::string& folder)
{
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    if (failed)
        throw InputError(folder, "", failed.message());
}

int lacks(const char* what)
{
    std::cerr << "qoro-ad: " << what << '\n';
    return 1;
}
} // namespace

int play(const PlayOptions& given)
{
    PlayOptions options = given;
    options.ad_file = ad_file_of(given.ad_file);
    PlayInput input = read_play_input(options);
    if (!options.out_folder.empty())
        make_folder(options.out_folder);
    std::optional<TraceFile> trace_file;
    if (!options.trace_file.empty())
        trace_file.emplace(options.trace_file);

    // The sandbox is tried while the toolkit starts.
    prepare_program();
    std::future<bool> sandbox =
        std::async(std::launch::async, [&] { return options.no_web_sandbox || sandbox_works(); });
    if (!start_toolkit())
        return lacks("there is no display to open a window on");
    if (options.no_web_sandbox) {
        std::cerr << "qoro-ad: the page runs without a sandbox\n";
        give_up_sandbox();
    } else if (!sandbox.get()) {
        return lacks("the page's sandbox does not work here; --no-web-sandbox goes on without one, "
                     "for pages that you trust");
    }
    return Player(options, std::move(input), std::move(trace_file)).run();
}

} // namespace qoro
