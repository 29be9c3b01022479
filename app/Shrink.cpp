#include "app/Shrink.h"

#include "app/WorkbenchInput.h"
#include "formats/InputError.h"
#include "platform/Numbers.h"
#include "workbench/Shrink.h"
#include "workbench/check/ShownFault.h"
#include "workbench/expression/Holds.h"
#include "workbench/report/MeasuredTexts.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <utility>

namespace qoro
{

namespace
{

constexpr int DoesNotHold = 1;

constexpr const char* Description = "Make a session as small as possible while it still shows a fault";

constexpr const char* Advice =
    "Steps, properties of the ad, answers of the network, settings and time are removed until nothing more can go.\n"
    "The condition is a rule of qoro-ad check, or an expression about the trace, the screen and the end;\n"
    "docs/shrink.md describes the language.\n\n"
    "Examples:\n"
    "  qoro-ad shrink session.json --while close-late -o small.json\n"
    "  qoro-ad shrink session.json --while 'line request url=\"*/start*\" at least 2 times'\n"
    "  qoro-ad shrink session.json --while 'line js event=video_ended before line player do=play'\n"
    "  qoro-ad shrink session.json --while '(ad open and not close reachable) for 15'\n"
    "  qoro-ad shrink ad.json --while 'view btnMute covered at end' --keep /ad/strWebViewUrl\n\n"
    "Exit status: 0 the smaller scenario is written; 1 the session does not show the condition; 2 the input or an\n"
    "option is not usable (one line on standard error says what, where and what was expected).\n";

using Predicate = std::function<bool(const ScenarioText&)>;

/// @throws InputError for an expression with a mistake
Predicate predicate_of(const ShrinkCommandOptions& options, const ScenarioText& scenario)
{
    if (const Rule* rule = rule_named(options.condition))
        return [fault = std::make_shared<ShownFault>(*rule, scenario, options.policy_seconds)](
                   const ScenarioText& smaller) { return fault->is_in(smaller); };
    return [expression = std::make_shared<ExpressionNode>(parse_expression(options.condition, "--while"))](
               const ScenarioText& smaller) { return holds(*expression, smaller.scenario()); };
}

void check_kept(const std::vector<std::string>& paths, const ScenarioText& scenario)
{
    for (const std::string& path : paths)
        if (!path.starts_with('/') || !scenario.has(path))
            throw InputError("--keep", path, "expected a place in the scenario, such as /ad/strVideoUrl");
}

void write_scenario(const std::string& path, const std::string& text)
{
    if (path == "-") {
        std::cout << text << std::flush;
        if (!std::cout)
            throw InputError("standard output", "", std::strerror(errno));
        return;
    }
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file)
        throw InputError(path, "", std::strerror(errno));
}

std::string change(std::size_t before, std::size_t after, const std::string& unit)
{
    return std::to_string(before) + " to " + std::to_string(after) + ' ' + unit;
}

} // namespace

void add_shrink_options(CLI::App& command, ShrinkCommandOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    command
        .add_option("input", options.input,
                    "What to make smaller: a scenario, an ad, an ad's folder, a VAST tag; - for standard input")
        ->type_name("SCENARIO|AD|TAG")
        ->required();
    command
        .add_option("--while", options.condition,
                    "What the smaller session must still show: the id of a rule of qoro-ad check, or an expression")
        ->type_name("RULE|EXPRESSION")
        ->required();
    command.add_option("-o,--out", options.out_file, "Write the scenario to this file; - for standard output")
        ->type_name("FILE")
        ->capture_default_str();
    command
        .add_option("--keep", options.kept,
                    "A JSON path of the scenario that is kept, with everything below it; repeatable")
        ->type_name("PATH")
        ->allow_extra_args(false);
    command
        .add_option("--policy-seconds", options.policy_seconds,
                    "For a rule: seconds after which the viewer must be able to close the ad")
        ->check(CLI::Range(0.0, 1e6))
        ->capture_default_str();
    command.add_option("--budget", options.budget, "Sessions, at most")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1'000'000'000}))
        ->capture_default_str();
}

int shrink_command(const ShrinkCommandOptions& options)
{
    const auto began = std::chrono::steady_clock::now();
    // Its mistakes come first: an ad's scenario may take long.
    if (!rule_named(options.condition))
        parse_expression(options.condition, "--while");
    BaseScenario base = read_base_scenario(options.input, options.ad);
    // As for a check, whose findings are to be found again.
    if (options.measure)
        measure_texts(base.scenario, options.measure, TextsToMeasure::OfTheAd);
    check_kept(options.kept, base.scenario);
    const Predicate shows = predicate_of(options, base.scenario);
    if (!shows(base.scenario)) {
        std::cerr << "qoro-ad: " << base.file << ": the session does not show this: " << options.condition << '\n';
        return DoesNotHold;
    }
    std::size_t sessions = 1;
    const ScenarioText smaller = shrink(base.scenario,
                                        [&](const ScenarioText& candidate) {
                                            ++sessions;
                                            return shows(candidate);
                                        },
                                        {.trials = options.budget - 1, .kept = options.kept});
    const std::string text = smaller.text();
    write_scenario(options.out_file, text);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - began;
    std::cerr << "qoro-ad: " << base.file << ": " << change(base.scenario.steps(), smaller.steps(), "steps") << ", "
              << change(base.scenario.text().size(), text.size(), "bytes") << "; " << sessions << " sessions in "
              << shortest_text(std::round(seconds.count() * 100) / 100) << " s"
              << (sessions >= options.budget ? "; the budget ended, more may go" : "") << '\n';
    return 0;
}

} // namespace qoro
