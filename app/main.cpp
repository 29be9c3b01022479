#include "app/InputFile.h"
#include "app/Play.h"
#include "app/PlayOptions.h"
#include "session/InputError.h"
#include "simulator/Simulation.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <iostream>
#include <string>

#ifdef __SANITIZE_ADDRESS__
/// Leaks are told apart by who asked for the memory, and GLib is built so that only a slow look shows that.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
#endif

namespace
{
constexpr int UnusableInput = 2;

int simulate_file(const std::string& file)
{
    const qoro::Scenario scenario = qoro::read_scenario(qoro::read_input_file(file), file);
    qoro::simulate(scenario, qoro::TraceFormat::Json, [](std::string_view line) { std::cout << line; });
    std::cout.flush();
    return 0;
}

int refuse(const std::string& complaint)
{
    std::cerr << "qoro-ad: " << complaint << '\n';
    return UnusableInput;
}

/// The first line: what CLI11 says, without its advice.
std::string first_line(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}
} // namespace

int main(int argc, char** argv)
{
    // A reader of our output that goes away is no reason to end without putting the volume back.
    std::signal(SIGPIPE, SIG_IGN);

    CLI::App app("Plays and simulates full-screen video ads.", "qoro-ad");
    app.require_subcommand(1);

    qoro::PlayOptions options;
    CLI::App* play = app.add_subcommand("play", "Play an ad in a window");
    qoro::add_play_options(*play, options);

    std::string scenario;
    CLI::App* simulate = app.add_subcommand("simulate", "Run an ad session in virtual time and print its trace");
    simulate->add_option("scenario", scenario, "The session: a JSON file; - for standard input")
        ->type_name("SCENARIO.json")
        ->required();

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return refuse(first_line(error.what()));
    }

    try {
        return play->parsed() ? qoro::play(options) : simulate_file(scenario);
    } catch (const qoro::InputError& error) {
        return refuse(error.what());
    } catch (const std::exception& error) {
        std::cerr << "qoro-ad: " << error.what() << '\n';
        return 1;
    }
}
