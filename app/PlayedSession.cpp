#include "app/PlayedSession.h"

#include "desktop/glib/StartupTrace.h"
#include "formats/AdAddresses.h"
#include "formats/AdFile.h"
#include "formats/InputError.h"
#include "formats/LogLines.h"
#include "kit/NetworkZone.h"
#include "kit/StandIn.h"
#include "platform/Numbers.h"

#include <gdk/gdkkeysyms.h>
#include <glib-unix.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <utility>
#include <variant>
#include <vector>

namespace qoro
{

namespace
{
constexpr const char* Title = translatable("Qoro Video Ad: ←→ turn, ↑↓ volume, H leave and return, Esc close");
constexpr const char* Help =
    translatable("←→ turn the device   ↑↓ volume   H leave the app and return   Esc close the ad");
constexpr std::array Signals{SIGINT, SIGTERM, SIGHUP};
/// Seconds for trackers that are still on their way when the ad has closed.
constexpr double LastRequestsPatience = 2;
constexpr double LastRequestsInterval = 0.01;
/// Seconds that a page always has to receive the close event.
constexpr double LastNews = 0.25;

/// Writes the log to standard error.
/// @param from absent for no line
LogSink log_lines(std::optional<ZulixLogTag> from)
{
    if (!from)
        return nullptr;
    return log_writer(*from, "", [](std::string_view line) { std::cerr << line << std::flush; });
}
} // namespace

PlayedSession::PlayedSession(const PlayOptions& options, PlayInput input, std::optional<TraceFile> trace_file)
    : options_(options), input_(std::move(input)), trace_file_(std::move(trace_file)),
      recording_(options.record_file.empty()
                     ? std::nullopt
                     : std::optional<PlayRecording>(std::in_place, options.record_file, !options.record_identifiers)),
      platform_(recording_ ? recording_->options(input_.platform) : input_.platform,
                recording_ ? &recording_->platform() : nullptr),
      ads_(recording_ ? static_cast<Platform&>(recording_->platform()) : platform_)
{
    if (recording_)
        recording_->connect(platform_, *this);
    if (trace_file_)
        trace_.emplace(recording_ ? recording_->clock() : platform_.loop(), trace_file_->format(),
                       recording_ ? recording_->redacted(trace_file_->sink()) : trace_file_->sink());
    ads_.set_event_sink(this);
    if (options_.watch)
        files_ = std::make_unique<FileWatch>([this] { reload(); });
    for (std::size_t n = 0; n < signals_.size(); ++n)
        signals_[n].reset(g_unix_signal_add(Signals[n], signalled, this));
}

PlayedSession::~PlayedSession()
{
    if (recording_)
        recording_->end();
    ads_.set_event_sink(nullptr);
    files_.reset();
    opened_.reset();
    tag_.reset();
    served_.reset();
    served_before_.reset();
    early_video_.reset();
    platform_.loop().clear();
}

int PlayedSession::run()
{
    for (const std::string& line : input_.remarks)
        std::cerr << "qoro-ad: " << line << std::endl;
    for (const std::string& line : input_.missing_files) {
        std::cerr << "qoro-ad: " << line << std::endl;
        has_failed_ |= !options_.lenient;
    }
    startup_point("platform ready");
    // The video of an ad that opens at once loads while the window is made.
    const bool opens_later =
        std::ranges::any_of(input_.steps, [](const Step& step) { return std::holds_alternative<OpenStep>(step.what); });
    if (!input_.tag && !opens_later)
        serve_ad(true);
    connect_window();
    follow_failures();
    platform_.display().show();
    startup_point("window shown");
    platform_.loop().restart_clock();
    open();
    startup_point("ad opened");
    schedule();
    platform_.loop().run();
    const bool trace_failed = trace_file_ && trace_file_->has_failed();
    const bool recording_failed = recording_ && !recording_->flush();
    return has_failed_ || trace_failed || recording_failed ? 1 : 0;
}

void PlayedSession::open()
{
    complaints_.begin(options_.ad_file, input_.missing_files);
    store_.reset();
    if (!input_.host.store_page.empty())
        store_.emplace(std::vector{store_page_of_id(input_.host.store_page).absoluteString().text()});
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
    SessionControls& controls = recording_ ? recording_->controls() : *this;
    Rehearsal rehearsal{input_.steps, controls, prepared};
    if (input_.tag)
        open_tag(std::move(host), std::move(rehearsal));
    else
        open_ad(host, std::move(rehearsal));
}

/// Makes the ad's files available.
/// @param loads_video whether its video is loaded from now on, before its player wants it
void PlayedSession::serve_ad(bool loads_video)
{
    platform_.set_origin_headers(input_.origins);
    served_ = std::make_unique<ServedAd>(input_.ad, input_.folder, [this](const AdServerHit& hit) { served(hit); });
    for (const auto& [address, path] : input_.copies)
        platform_.add_video_copy(address_on_server(address, served_->base()), path);
    if (!loads_video)
        return;
    const QoroVideoAd& ad = *served_->ad();
    const NSString copy = ad.bIsUseVideoCache ? platform_.video_cache().path_for(ad.strVideoUrl) : NSString();
    early_video_ = platform_.players().prepare(
        copy ? NSURL::fileURLWithPath(copy) : NSURL::URLWithString(ad.strVideoUrl), [](const std::string&) {});
}

void PlayedSession::open_ad(const HostSetup& host, Rehearsal rehearsal)
{
    if (!served_)
        serve_ad(false);
    complaints_.set_ad(copy_of(*served_->ad()));
    watch_files();
    if (recording_)
        recording_->begin(*served_->ad(), input_.orientation, host, input_.steps, *this);
    by_host(
        "open",
        [&] {
            opened_ = std::make_unique<OpenedAd>(
                ads_, served_->ad(), [this](const AdOutcome& outcome) { ended(outcome); }, host, std::move(rehearsal));
        },
        static_cast<int>(ads_.shared<OpenNetworks>().open));
}

void PlayedSession::open_tag(HostSetup host, Rehearsal rehearsal)
{
    platform_.set_origin_headers(input_.origins);
    for (const auto& [address, path] : input_.copies)
        platform_.add_video_copy(address, path);
    watch_files();
    tag_hosts_ = std::make_unique<DesktopTag>(*input_.tag);
    TagOptions options = tag_hosts_->options();
    options.resolver.band.width = input_.band_pixels;
    if (recording_) {
        recording_->begin(*input_.tag, input_.orientation, host, input_.steps, *this);
        options = recording_->options(std::move(options));
    }
    by_host(
        "openTag",
        [&] {
            tag_ = std::make_unique<OpenedTag>(
                ads_, *input_.tag, [this](const TagOutcome& outcome) { tag_ended(outcome); }, std::move(host),
                std::move(options), std::move(rehearsal));
        },
        tag_opening(ads_, *input_.tag, options));
}

bool PlayedSession::leave_screen()
{
    bool left = false;
    by_host("leaveScreen", [&] { left = opened_ ? opened_->leave_screen() : tag_ && tag_->leave_screen(); });
    return left;
}

/// The files that the options name. Those of the ad's folder are added as they are requested, so that files that this
/// program or another writes there do not count.
void PlayedSession::watch_files()
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
void PlayedSession::served(const AdServerHit& hit)
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
void PlayedSession::reload()
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
    early_video_.reset();
    open();
}

void PlayedSession::connect_window()
{
    Screen& screen = platform_.display();
    screen.set_title(platform_.translation().translate(Title));
    screen.mark_safe_areas(input_.portrait_insets, input_.landscape_insets);
    screen.set_help(platform_.translation().translate(Help));
    screen.on_key = [this](unsigned keyval, unsigned) { return key_pressed(keyval); };
    screen.on_close = [this] { close_ad(ClosedBy::Viewer); };
    screen.on_iconified = [this](bool iconified) { keys_.leave_or_return(iconified); };
}

// ----------------------------------------------------------------------------------------------------- timers, input

void PlayedSession::at(double seconds, std::function<void()> event)
{
    platform_.loop().start_timer(seconds - platform_.loop().now(), false, std::move(event));
}

void PlayedSession::schedule()
{
    for (const double seconds : options_.snapshots)
        at(seconds, [this, seconds] { take_snapshot(seconds); });
    if (options_.seconds)
        at(*options_.seconds, [this] { close_ad(ClosedBy::Host); });
}

void PlayedSession::change_device(const DeviceChange& change)
{
    platform_.device().change({.orientation = change.orientation,
                               .status_bar_orientation = change.status_bar_orientation,
                               .status_bar_hidden = change.status_bar_hidden});
    if (change.output_volume)
        platform_.volume().set_value(*change.output_volume);
}

bool PlayedSession::key_pressed(unsigned keyval)
{
    // Escape always closes, also while a text field has the focus.
    if (keyval != GDK_KEY_Escape && platform_.display().is_written_into())
        return false;
    if (keyval != GDK_KEY_Escape)
        return keys_.press(keyval);
    if (!leave_screen())
        close_ad(ClosedBy::Viewer);
    return true;
}

void PlayedSession::take_snapshot(double seconds)
{
    const auto path = std::filesystem::path(options_.out_folder) / ("snapshot-" + shortest_text(seconds) + ".png");
    const std::string problem = platform_.display().snapshot_png(path.string());
    if (!problem.empty())
        fail(path.string() + ": the picture could not be written: " + problem);
}

/// What the host does to the ad, rather than the ad itself or the machine.
void PlayedSession::by_host(std::string_view what, const std::function<void()>& work, const Value& of)
{
    if (recording_)
        recording_->by_host(what, work, of);
    else
        work();
}

/// Work of the machine inside an event of the ad.
void PlayedSession::outside(const std::function<void()>& work)
{
    if (recording_)
        recording_->outside(work);
    else
        work();
}

// ------------------------------------------------------------------------------------------------------------ the end

void PlayedSession::receive(const Event& event)
{
    if (trace_)
        trace_->receive(event);
    complaints_.receive(event);
}

void PlayedSession::follow_failures()
{
    platform_.players().options.on_duration = [this](double duration) { complaints_.duration_known(duration); };
    platform_.fetcher().on_image_failure = [this](const std::string& address, const std::string& reason) {
        complaints_.content_failed(address, reason);
    };
}

void PlayedSession::ended(const AdOutcome& outcome)
{
    if (outcome.error)
        fail("nothing was shown: " + *outcome.error);
    // The ad may open again.
    if (!files_)
        end();
}

void PlayedSession::tag_ended(const TagOutcome& outcome)
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

void PlayedSession::close_ad(ClosedBy closer)
{
    if (ends_) {
        platform_.loop().quit();
        return;
    }
    by_host(
        "close",
        [&] {
            if (opened_)
                opened_->close(closer);
            if (tag_)
                tag_->close(closer);
        },
        static_cast<int>(closer));
    end();
}

void PlayedSession::end()
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
void PlayedSession::display_lost()
{
    fail("the display is gone, and the ad was closed");
    close_ad(ClosedBy::Host);
    platform_.loop().run_alone([this] { return platform_.fetcher().pending() == 0; }, LastRequestsPatience);
    platform_.loop().quit();
}

void PlayedSession::fail(const std::string& what)
{
    has_failed_ = true;
    std::cerr << "qoro-ad: " << what << std::endl;
}

gboolean PlayedSession::signalled(gpointer self)
{
    static_cast<PlayedSession*>(self)->close_ad(ClosedBy::Host);
    return G_SOURCE_CONTINUE;
}

} // namespace qoro
