#include "app/Simulate.h"

#include "app/Interruption.h"
#include "app/LogOption.h"
#include "app/OrderedWork.h"
#include "app/Progress.h"
#include "app/TraceFile.h"
#include "app/WorkbenchInput.h"
#include "formats/AdInput.h"
#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "formats/JsonText.h"
#include "formats/LogLines.h"
#include "record/RecordedScenario.h"
#include "record/Recording.h"
#include "simulator/Simulation.h"
#include "simulator/Summary.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <unistd.h>
#include <utility>

namespace qoro
{

namespace
{

constexpr int UnusableInput = 2;
constexpr unsigned MostJobs = 256;

constexpr const char* Description = "Run whole ad sessions in virtual time and print what leaves the ad's controller";

constexpr const char* Advice =
    "A scenario is a JSON file: the ad, the device and host around it, what the network answers, and the steps that\n"
    "the viewer takes. docs/simulator.md describes it key by key.\n\n"
    "Examples:\n"
    "  qoro-ad simulate session.json                        every event, a JSON object a line\n"
    "  qoro-ad simulate session.json --format text          the same as a timeline to read\n"
    "  qoro-ad simulate session.json --summary              the timeline, then trackers, times and leftovers\n"
    "  qoro-ad simulate ad.json --summary                   an ad without a scenario, from its own folder\n"
    "  qoro-ad simulate tag.xml --summary                   a VAST tag; its documents are fetched first\n"
    "  qoro-ad simulate recording.json                      what play --record wrote: the same trace again\n"
    "  qoro-ad simulate one.json two.json --jobs 2          several sessions, one after the other\n"
    "  qoro-ad simulate --jsonl <many.jsonl >results.jsonl  a scenario a line in, a result a line out\n\n"
    "Exit status: 0 every session ran; 2 a scenario or an option is not usable (one line on standard error says\n"
    "which, where and what was expected; the other scenarios run all the same); 1 the output can't be written.\n"
    "With --jsonl a scenario that is not usable gives {\"scenario\": n, \"error\": \"...\"}, and the status stays 0.\n";

/// Standard output. A write error is reported once, at the end.
class Output
{
public:
    void write(std::string_view text)
    {
        if (!failed() && std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
            error_ = errno;
    }
    void flush()
    {
        if (!failed() && std::fflush(stdout) != 0)
            error_ = errno;
    }
    bool failed() const { return error_ != 0; }
    void check() const
    {
        if (failed())
            throw std::runtime_error(std::string("standard output: ") + std::strerror(error_));
    }

private:
    std::atomic<int> error_ = 0;
};

/// Runs the work and returns its error text, empty for success; catches std::exception.
template <typename Work>
std::string complaint_of(const std::string& name, Work&& work)
{
    try {
        work();
        return "";
    } catch (const InputError& error) {
        return error.what();
    } catch (const std::exception& error) {
        return name + ": " + error.what();
    }
}

/// The log of one session. Its lines reach standard error together, because several sessions may run at a time.
class SessionLog
{
public:
    /// @param from absent for no line
    /// @param name of the scenario
    SessionLog(std::optional<ZulixLogTag> from, const std::string& name)
    {
        if (from)
            sink_ = log_writer(*from, name, [this](std::string_view line) { lines_ += line; });
    }
    ~SessionLog() { std::fwrite(lines_.data(), 1, lines_.size(), stderr); }
    SessionLog(const SessionLog&) = delete;
    SessionLog& operator=(const SessionLog&) = delete;

    const LogSink& sink() const { return sink_; }

private:
    LogSink sink_;
    std::string lines_;
};

/// How many sessions have been simulated, on the terminal; nothing where the results are written to it as well.
class Count
{
public:
    /// @param all sessions; absent while unknown
    explicit Count(std::optional<std::size_t> all) : all_(all)
    {
        if (!isatty(STDOUT_FILENO))
            progress_.emplace();
    }
    /// One more session is done.
    void add()
    {
        ++done_;
        if (progress_)
            progress_->set("sessions simulated: " + std::to_string(done_) +
                           (all_ ? " of " + std::to_string(*all_) : ""));
    }
    /// Before a line on standard error.
    void make_way()
    {
        if (progress_)
            progress_->clear();
    }

private:
    const std::optional<std::size_t> all_;
    std::size_t done_ = 0;
    std::optional<Progress> progress_;
};

// -------------------------------------------------------------------------------------------------------------- files

struct FileStyle {
    TraceFormat format;
    bool summary;
    std::optional<ZulixLogTag> log;
    /// Whether each trace starts with its file's name.
    bool named;
};

void write_header(const std::string& file, TraceFormat format, const LineSink& sink)
{
    std::string line;
    if (format == TraceFormat::Text) {
        line = "== " + file + " ==\n";
    } else {
        line = R"({"scenario":)";
        append_json_text(line, file);
        line += "}\n";
    }
    sink(line);
}

void write_summary(const Summary& summary, TraceFormat format, const LineSink& sink)
{
    std::string text;
    if (format == TraceFormat::Text) {
        text = "\n";
        append_table(text, summary);
    } else {
        text = R"({"summary":)";
        append_json(text, summary);
        text += "}\n";
    }
    sink(text);
}

void run_scenario(const Scenario& scenario, const std::string& name, const FileStyle& style, const LineSink& trace,
                  const LineSink& summary)
{
    const SessionLog log(style.log, name);
    if (style.summary)
        write_summary(simulate_and_sum_up(scenario, style.format, trace, log.sink()), style.format, summary);
    else
        simulate(scenario, style.format, trace, log.sink());
}

void write_remarks(const AdScenario& made)
{
    for (const auto* lines : {&made.remarks, &made.missing_files})
        for (const std::string& line : *lines)
            std::cerr << "qoro-ad: " << line << '\n';
}

void run_file(const std::string& file, const SimulateOptions& options, const FileStyle& style, const LineSink& sink)
{
    AdInput input = read_ad_input(file, InputKind::Scenario);
    if (input.kind != InputKind::Scenario) {
        const AdScenario made = scenario_of(input, options.ad);
        write_remarks(made);
        input.text = made.text;
    }
    if (input.kind == InputKind::Scenario)
        mend_recording(input);
    const bool recorded = input.kind == InputKind::Scenario && is_recording(input.text);
    if (options.as_scenario) {
        if (!recorded)
            throw InputError(input.name, "", "--as-scenario: expected a recording of qoro-ad play --record");
        return sink(scenario_of_recording(input.text, input.name));
    }
    if (recorded) {
        if (style.summary)
            throw InputError(input.name, "/replay", "a replay has no summary; expected a scenario, or no --summary");
        if (style.named)
            write_header(file, style.format, sink);
        const SessionLog log(style.log, input.name);
        replay(input.text, input.name, style.format, sink, log.sink());
    } else {
        const Scenario scenario = read_scenario(input.text, input.name);
        if (style.named)
            write_header(file, style.format, sink);
        run_scenario(scenario, input.name, style, sink, sink);
    }
    if (style.named && style.format == TraceFormat::Text)
        sink("\n");
}

FileStyle style_of(const SimulateOptions& options)
{
    return {.format = options.format.value_or(options.summary ? TraceFormat::Text : TraceFormat::Json),
            .summary = options.summary,
            .log = options.log,
            .named = options.files.size() > 1};
}

int run_files(const SimulateOptions& options)
{
    const FileStyle style = style_of(options);
    Output output;
    int status = 0;
    // Whether a replay differs from its recording, which is no mistake of the input.
    std::atomic<bool> differs = false;
    {
        Count count(options.files.size());
        OrderedWork work(
            std::min<unsigned>(options.jobs, static_cast<unsigned>(options.files.size())),
            [&output](std::string_view text) { output.write(text); },
            [&](const std::string& complaint) {
                output.flush();
                count.add();
                if (complaint.empty())
                    return;
                count.make_way();
                std::cerr << "qoro-ad: " << complaint << '\n';
                if (!differs)
                    status = UnusableInput;
            });
        for (const std::string& file : options.files) {
            if (output.failed() || Interruption::requested())
                break;
            work.add([&](const LineSink& sink) {
                return complaint_of(file, [&] {
                    try {
                        run_file(file, options, style, sink);
                    } catch (const ReplayDifference&) {
                        differs = true;
                        throw;
                    }
                });
            });
        }
    }
    output.check();
    return status == 0 && differs ? 1 : status;
}

// -------------------------------------------------------------------------------------------------------------- lines

/// Reads one line of standard input without its end. A line longer than LargestInput is cut just beyond it.
bool read_line(std::string& line)
{
    line.clear();
    int c = EOF;
    while ((c = getc_unlocked(stdin)) != EOF && c != '\n')
        if (line.size() <= LargestInput)
            line += static_cast<char>(c);
    return c != EOF || !line.empty();
}

std::string simulated_line(const std::string& line, const std::string& name, std::optional<ZulixLogTag> log_from)
{
    if (line.size() > LargestInput)
        throw InputError(name, "", "larger than 64 MiB");
    if (is_recording(line))
        throw InputError(name, "/replay", "expected a scenario; qoro-ad simulate FILE replays a recording");
    const Scenario scenario = read_scenario(line, name);
    const SessionLog log(log_from, name);
    std::string result = R"("trace":[)";
    const LineSink into_result = [&result](std::string_view event) {
        if (result.back() != '[')
            result += ',';
        result += event.substr(0, event.size() - 1);
    };
    const Summary summary = simulate_and_sum_up(scenario, TraceFormat::Json, into_result, log.sink());
    result += R"(],"summary":)";
    append_json(result, summary);
    return result;
}

/// The result of a line, valid or not.
/// @param number of the line, from 1
std::string result_of(const std::string& line, std::int64_t number, std::optional<ZulixLogTag> log)
{
    std::string result = R"({"scenario":)";
    append_json(result, number);
    result += ',';
    const std::string name = "stdin line " + std::to_string(number);
    std::string simulated;
    const std::string complaint = complaint_of(name, [&] { simulated = simulated_line(line, name, log); });
    if (complaint.empty()) {
        result += simulated;
    } else {
        result += R"("error":)";
        append_json_text(result, complaint);
    }
    result += "}\n";
    return result;
}

int run_lines(const SimulateOptions& options)
{
    Output output;
    {
        Count count(std::nullopt);
        OrderedWork work(
            options.jobs, [&output](std::string_view text) { output.write(text); },
            // Flush each result: the other end of the pipe may wait for it before sending more.
            [&](const std::string&) {
                output.flush();
                count.add();
            });
        std::string line;
        for (std::int64_t number = 1; !output.failed() && read_line(line); ++number) {
            // What a signal has cut off is no line.
            if (Interruption::requested())
                break;
            work.add([line, number, log = options.log](const LineSink& sink) {
                sink(result_of(line, number, log));
                return std::string();
            });
        }
    }
    output.check();
    if (std::ferror(stdin) && !Interruption::requested())
        throw InputError("stdin", "", std::strerror(errno));
    return 0;
}

// ----------------------------------------------------------------------------------------------------------------- ad

void write_file(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file)
        throw InputError(path, "", std::strerror(errno));
}

int run_ad(const SimulateOptions& options)
{
    const SimulatedAdOptions& ad = options.ad;
    const AdInput input = read_ad_input(ad.parts.ad_file);
    if (input.kind == InputKind::Scenario)
        throw InputError(input.name, "", "expected an ad or a VAST tag, got a scenario; leave out --ad");
    const AdScenario made = scenario_of(input, ad);
    write_remarks(made);
    if (!ad.scenario_file.empty())
        write_file(ad.scenario_file, made.text);
    const Scenario scenario = read_scenario(made.text, ad.parts.ad_file);
    Output output;
    const LineSink standard = [&output](std::string_view text) { output.write(text); };
    if (ad.trace_file.empty() || ad.trace_file == "-") {
        run_scenario(scenario, ad.parts.ad_file, style_of(options), standard, standard);
    } else {
        const TraceFile trace(ad.trace_file);
        run_scenario(scenario, ad.parts.ad_file, style_of(options), trace.sink(), standard);
        if (trace.has_failed())
            return 1;
    }
    output.flush();
    output.check();
    return 0;
}

void check_options(const SimulateOptions& options)
{
    if (!options.ad.parts.ad_file.empty()) {
        if (options.jsonl || !options.files.empty())
            throw InputError("simulate", "", "--ad takes the place of scenarios: expected no file and no --jsonl");
        return;
    }
    if (options.jsonl && !options.files.empty())
        throw InputError("simulate", "",
                         "--jsonl reads standard input: expected no file, got " + options.files.front());
    if (options.jsonl && options.format == TraceFormat::Text)
        throw InputError("simulate", "", "--jsonl writes JSON: expected no --format text");
    if (!options.jsonl && options.files.empty())
        throw InputError("simulate", "", "expected a SCENARIO.json, an ad, - for standard input, --jsonl, or --ad AD");
    if (std::ranges::count(options.files, "-") > 1)
        throw InputError("simulate", "", "expected - (standard input) once");
}

std::string check_format(const std::string& name)
{
    return name == "json" || name == "text" ? "" : "expected json or text, got \"" + name + "\"";
}

std::string check_jobs(const std::string& text)
{
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool good = error == std::errc() && end == text.data() + text.size() && number >= 1 && number <= MostJobs;
    return good ? "" : "expected a whole number from 1 to " + std::to_string(MostJobs) + ", got \"" + text + "\"";
}

} // namespace

void add_simulate_options(CLI::App& command, SimulateOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    command
        .add_option("scenarios", options.files,
                    "The sessions: scenarios, ads, folders of ads, VAST tags; - for standard input")
        ->type_name("SCENARIO.json|AD");
    command
        .add_option_function<std::string>(
            "--format",
            [&options](const std::string& name) {
                options.format = name == "text" ? TraceFormat::Text : TraceFormat::Json;
            },
            "The trace: an object a line, or a timeline to read; json unless there is a summary")
        ->type_name("json|text")
        ->check(CLI::Validator(check_format, ""));
    command.add_flag("--as-scenario", options.as_scenario,
                     "Write the scenario of a recording instead: steps that can be changed and left out");
    command.add_flag("--summary", options.summary,
                     "End with the trackers sent, the times, and what the ad left behind");
    command.add_flag("--jsonl", options.jsonl,
                     "A scenario a line on standard input gives a result a line: "
                     R"({"scenario": n, "trace": [...], "summary": {...}})");
    add_log_option(command, options.log);
    add_simulated_ad_options(command, options.ad);
    command.add_option("--jobs", options.jobs, "Sessions that run at a time; the output is the same to the byte")
        ->type_name("N")
        ->check(CLI::Validator(check_jobs, ""));
}

int simulate_command(const SimulateOptions& options)
{
    // Default handling: as for any filter, a closed output pipe ends the process.
    std::signal(SIGPIPE, SIG_DFL);
    check_options(options);
    // The results of the sessions that have started are written whole.
    const Interruption interruption;
    const bool ad = !options.ad.parts.ad_file.empty();
    const int status = ad ? run_ad(options) : options.jsonl ? run_lines(options) : run_files(options);
    Interruption::end_program();
    return status;
}

} // namespace qoro
