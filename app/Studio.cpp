#include "app/Studio.h"

#include "app/Check.h"
#include "app/StudioAd.h"
#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/Owned.h"
#include "desktop/net/LocalServer.h"
#include "formats/InputError.h"
#include "formats/JsonText.h"
#include "workbench/check/Output.h"
#include "workbench/report/MeasuredTexts.h"
#include "workbench/studio/StudioPage.h"
#include "workbench/studio/StudioSession.h"

#include <CLI/CLI.hpp>

#include <gio/gio.h>
#include <glib-unix.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <utility>

namespace qoro
{

namespace
{

using Answer = LocalServer::Answer;

constexpr const char* Description = "Work on an ad in the browser: its report, live";

constexpr const char* Advice =
    "Prints one line: the address of the page, which only this machine reaches and only with the token in it. The "
    "page\n"
    "is the report of the ad; it follows changes of the ad's files. A click on a control in the drawn device "
    "simulates\n"
    "the session anew; stalls, turns, calls and failing servers are dragged onto the time axis. Ctrl+C ends it.\n\n"
    "Examples:\n"
    "  qoro-ad studio ad.json --open                    an ad, in the desktop's browser\n"
    "  qoro-ad studio ad.json --device iphone-15        on a device\n"
    "  qoro-ad studio http://ad.example/vast.xml        a VAST tag\n"
    "  qoro-ad studio session.json                      a scenario or a recording, to go on from\n\n"
    "Exit status: 0 ended by a signal; 1 the server cannot start; 2 the ad or an option is not usable (one line on\n"
    "standard error says which, where and what was expected).\n";

/// Signals that end the studio in order.
constexpr std::array Signals{SIGINT, SIGTERM, SIGHUP};

std::string json_text(std::string_view text)
{
    std::string json;
    append_json_text(json, text);
    return json;
}

Answer refusal(const std::string& complaint)
{
    constexpr unsigned Conflict = 409;
    return {.status = Conflict, .body = R"({"complaint":)" + json_text(complaint) + "}"};
}

/// The ad, played in a window: `qoro-ad play` as a child process.
class PlayedAd
{
public:
    /// @param ended called with the last line of its standard error; empty after success
    explicit PlayedAd(std::function<void(const std::string&)> ended) : ended_(std::move(ended)) {}
    ~PlayedAd() { stop(); }
    PlayedAd(const PlayedAd&) = delete;
    PlayedAd& operator=(const PlayedAd&) = delete;

    bool plays() const { return bool(process_); }
    /// @return why it does not start: one line; empty if it does
    std::string start(const std::vector<std::string>& options)
    {
        if (process_)
            return "the ad is playing already, in its window";
        const auto has = [](const char* name) {
            const char* value = std::getenv(name);
            return value && *value;
        };
        if (!has("DISPLAY") && !has("WAYLAND_DISPLAY"))
            return "there is no display to play on: start the studio where DISPLAY or WAYLAND_DISPLAY is set";
        std::vector<const char*> arguments{"/proc/self/exe", "play"};
        for (const std::string& option : options)
            arguments.push_back(option.c_str());
        arguments.push_back(nullptr);
        Error failed;
        // The link is resolved by the child, whose program it would be: the path itself is passed.
        Owned<char, g_free> program(g_file_read_link(arguments[0], failed.out()));
        if (!program)
            return failed.message();
        arguments[0] = program.get();
        process_ = adopt(g_subprocess_newv(
            arguments.data(),
            static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_SILENCE | G_SUBPROCESS_FLAGS_STDERR_PIPE),
            failed.out()));
        if (!process_)
            return failed.message();
        g_subprocess_communicate_utf8_async(
            process_.get(), nullptr, nullptr, async_done,
            async_data([self = std::weak_ptr(self_)](GObject* from, GAsyncResult* result) {
                if (const auto played = self.lock())
                    (*played)->finished(from, result);
            }));
        return "";
    }

    /// Closes the ad in order.
    void stop()
    {
        // Not g_subprocess_send_signal(): it leaves the work to a thread, and this program may end first.
        const char* number = process_ ? g_subprocess_get_identifier(process_.get()) : nullptr;
        if (number)
            kill(std::atoi(number), SIGTERM);
    }

private:
    void finished(GObject* from, GAsyncResult* result)
    {
        auto* process = reinterpret_cast<GSubprocess*>(from);
        char* errors = nullptr;
        Error failed;
        g_subprocess_communicate_utf8_finish(process, result, nullptr, &errors, failed.out());
        std::string text = take_text(errors);
        const bool good = g_subprocess_get_if_exited(process) && g_subprocess_get_exit_status(process) == 0;
        process_.reset();
        text.erase(text.find_last_not_of('\n') + 1);
        const std::string last = text.substr(text.find_last_of('\n') + 1);
        ended_(good ? "" : last.empty() ? "play has ended early" : last);
    }

    const std::function<void(const std::string&)> ended_;
    ObjectRef<GSubprocess> process_;
    std::shared_ptr<PlayedAd*> self_ = std::make_shared<PlayedAd*>(this);
};

class Studio
{
public:
    explicit Studio(const StudioOptions& options);
    /// @return the exit status, if the server cannot start; otherwise ends the program with 0
    int run();

private:
    [[noreturn]] void end();
    ScenarioText own_course() const;
    ReportParts parts();
    std::string session_json();
    std::string news() const;
    Answer page();
    Answer edit(const std::string& json);
    Answer rest();
    Answer lists();
    Answer checked(CheckFormat format);
    Answer report();
    Answer play();
    Answer fetch_again();
    void ad_changed();
    void tell() { server_.tell(news()); }

    const StudioOptions& options_;
    const LoopRef loop_{g_main_loop_new(nullptr, FALSE)};
    StudioAd ad_;
    StudioSession session_;
    /// Counts the changes of the session and the ad.
    int revision_ = 1;
    /// Counts the versions of the ad and of what is found in it.
    int version_ = 1;
    PlayedAd played_;
    /// About the last play.
    std::string play_complaint_;
    LocalServer server_;
};

Studio::Studio(const StudioOptions& options)
    : options_(options), ad_(
                             options.report, [this] { ad_changed(); },
                             [this] {
                                 ++version_;
                                 tell();
                             }),
      session_(own_course()), played_([this](const std::string& complaint) {
          play_complaint_ = complaint;
          tell();
      }),
      server_(
          {
              {"GET", "/", [this](const std::string&) { return page(); }},
              {"GET", "/session", [this](const std::string&) { return Answer{.body = session_json()}; }},
              {"POST", "/edit", [this](const std::string& json) { return edit(json); }},
              {"GET", "/rest", [this](const std::string&) { return rest(); }},
              {"GET", "/lists", [this](const std::string&) { return lists(); }},
              {"POST", "/play", [this](const std::string&) { return play(); }},
              {"POST", "/fetch", [this](const std::string&) { return fetch_again(); }},
              {"GET", "/scenario.json",
               [this](const std::string&) {
                   return Answer{.body = session_.scenario().text(), .file_name = "scenario.json"};
               }},
              {"GET", "/report.html", [this](const std::string&) { return report(); }},
              {"GET", "/findings.json", [this](const std::string&) { return checked(CheckFormat::Json); }},
              {"GET", "/findings.txt", [this](const std::string&) { return checked(CheckFormat::Text); }},
          },
          "/news", [this] { return news(); })
{
}

/// With the device of the command line, so that an exported scenario has it.
ScenarioText Studio::own_course() const
{
    ScenarioText own = ad_.base().scenario;
    if (options_.report.ad.parts.device)
        own.set_device(*options_.report.ad.parts.device);
    return own;
}

ReportParts Studio::parts()
{
    ReportParts parts = ad_.parts(session_.scenario());
    if (options_.report.measure)
        measure_texts(parts.scenario, options_.report.measure);
    return parts;
}

/// What is new, for pages: a line of JSON.
std::string Studio::news() const
{
    return R"({"revision":)" + std::to_string(revision_) + R"(,"version":)" + std::to_string(version_) +
           R"(,"complaint":)" + json_text(ad_.complaint()) + R"(,"plays":)" + (played_.plays() ? "true" : "false") +
           R"(,"play":)" + json_text(play_complaint_) + "}";
}

std::string Studio::session_json()
{
    return R"({"news":)" + news() + R"(,"tag":)" + (ad_.base().kind == InputKind::Tag ? "true" : "false") +
           R"(,"state":)" + session_.state() + R"(,"data":)" + session_data(parts()) + "}";
}

Answer Studio::page()
{
    const ReportParts shown = parts();
    // The page itself says what it may load.
    return {.type = "text/html; charset=utf-8",
            .body = studio_page(shown.title, session_data(shown)),
            .policy = "base-uri 'none'"};
}

Answer Studio::edit(const std::string& json)
{
    try {
        session_.edit(json);
    } catch (const InputError& error) {
        return refusal(error.what());
    }
    ++revision_;
    Answer answer{.body = session_json()};
    tell();
    return answer;
}

/// What takes longer to find than a session.
Answer Studio::rest()
{
    const StudioAd::Findings* found = ad_.findings();
    if (!found)
        return {.body = R"({"pending":true})"};
    return {.body = found->matrix};
}

/// The findings, with their moments in the session as it is now.
Answer Studio::lists()
{
    const StudioAd::Findings* found = ad_.findings();
    if (!found)
        return {.body = R"({"pending":true})"};
    ReportParts shown = ad_.parts(session_.scenario());
    shown.findings = listed(found->checked, shown);
    return {.body = lists_data(shown)};
}

Answer Studio::checked(CheckFormat format)
{
    const CheckResult& result = ad_.wait_for_findings().checked;
    AdReport report{.file = ad_.base().file, .sessions = result.sessions};
    for (const Finding& finding : result.findings)
        report.findings.push_back({.finding = finding});
    if (format == CheckFormat::Text)
        return {.type = "text/plain; charset=utf-8", .body = text_of(report, false), .file_name = "findings.txt"};
    return {.body = json_of(std::array{report}), .file_name = "findings.json"};
}

Answer Studio::report()
{
    const StudioAd::Findings& found = ad_.wait_for_findings();
    ReportParts shown = parts();
    shown.findings = listed(found.checked, shown);
    shown.stills_of = [&found](const std::string& address, std::size_t) {
        const auto stills = found.stills.find(address);
        return stills == found.stills.end() ? std::vector<VideoStill>() : stills->second;
    };
    return {.type = "text/html; charset=utf-8",
            .body = report_page(shown.title, report_data(shown)),
            .file_name = "report.html"};
}

Answer Studio::play()
{
    const ReportOptions& report = options_.report;
    if (ad_.base().kind == InputKind::Scenario)
        return refusal("a scenario is only simulated: open its ad with the studio to play it");
    std::vector<std::string> arguments{report.input};
    if (const auto& device = report.ad.parts.device) {
        std::string size;
        append_json(size, device->screen.width);
        size += 'x';
        append_json(size, device->screen.height);
        arguments.insert(arguments.end(), {"--device", device->name.empty() ? size : std::string(device->name)});
    }
    if (!report.ad.parts.steps_file.empty())
        arguments.insert(arguments.end(), {"--steps", report.ad.parts.steps_file});
    if (options_.no_web_sandbox)
        arguments.emplace_back("--no-web-sandbox");
    if (options_.allow_private_network)
        arguments.emplace_back("--allow-private-network");
    play_complaint_.clear();
    if (const std::string complaint = played_.start(arguments); !complaint.empty())
        return refusal(complaint);
    tell();
    return {.body = R"({"started":true})"};
}

Answer Studio::fetch_again()
{
    if (ad_.base().kind != InputKind::Tag)
        return refusal("only a tag is fetched; the files of an ad are followed");
    // Fetching runs the main loop, which must not be inside this answer then.
    g_idle_add(
        [](gpointer ad) -> gboolean {
            static_cast<StudioAd*>(ad)->read_again();
            return G_SOURCE_REMOVE;
        },
        &ad_);
    return {.body = R"({"started":true})"};
}

void Studio::ad_changed()
{
    if (ad_.complaint().empty()) {
        session_.renew(own_course());
        ++version_;
        ++revision_;
    }
    tell();
}

int Studio::run()
{
    if (!server_.error().empty()) {
        std::cerr << "qoro-ad: 127.0.0.1: " << server_.error() << '\n';
        return 1;
    }
    // Before the address: a reader of it may end the program at once.
    for (const int signal : Signals)
        g_unix_signal_add(
            signal, [](gpointer studio) -> gboolean { static_cast<Studio*>(studio)->end(); }, this);
    std::cout << server_.address() << std::endl;
    if (Error failed;
        options_.open && !g_app_info_launch_default_for_uri(server_.address().c_str(), nullptr, failed.out()))
        std::cerr << "qoro-ad: --open: no browser opens the address: " << failed.message() << "; open it yourself\n";
    g_main_loop_run(loop_.get());
    end();
}

/// Also while a tag is fetched, inside a loop of its own.
void Studio::end()
{
    played_.stop();
    std::cout.flush();
    // The check in the background may take seconds more; nothing of it is kept.
    std::_Exit(0);
}

} // namespace

void add_studio_options(CLI::App& command, StudioOptions& options)
{
    add_shown_ad_options(command, options.report);
    command.description(Description);
    command.get_option("input")->description(
        "What to work on: an ad, an ad's folder, a VAST tag, a scenario, a recording");
    command.footer(Advice);
    command.add_flag("--open", options.open, "Open the page in the desktop's browser");
    command.add_flag("--no-web-sandbox", options.no_web_sandbox,
                     "Play the ad with its page outside a sandbox, for trusted pages on a machine without one");
    command.add_flag("--allow-private-network", options.allow_private_network,
                     "Play the ad with access to private networks, such as a studio's own servers");
}

int studio_command(const StudioOptions& options)
{
    if (options.report.input == "-")
        throw InputError("studio", "", "expected a file, which can change; got standard input");
    return Studio(options).run();
}

} // namespace qoro
