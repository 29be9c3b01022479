#include "app/Simulate.h"
#include "formats/InputError.h"

#ifdef QORO_DESKTOP
#include "app/Cache.h"
#include "app/Play.h"
#include "app/PlayOptions.h"
#endif

#include <CLI/CLI.hpp>

#include <csignal>
#include <iostream>
#include <string>

#ifdef __SANITIZE_ADDRESS__
/// Leak suppressions match the allocating frames; in GLib only the slow unwinder finds them. Ten frames suffice and
/// cost a third less time than the default of thirty.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0:malloc_context_size=10";
}
#endif

namespace
{
constexpr int UnusableInput = 2;

int refuse(const std::string& complaint)
{
    std::cerr << "qoro-ad: " << complaint << '\n';
    return UnusableInput;
}

/// CLI11's message without the advice in the lines after it.
std::string first_line(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

int run(int argc, char** argv)
{
    CLI::App app("Plays and simulates full-screen video ads.", "qoro-ad");
    app.require_subcommand(1);

#ifdef QORO_DESKTOP
    qoro::PlayOptions play_options;
    CLI::App* const play = app.add_subcommand("play", "Play an ad in a window");
    qoro::add_play_options(*play, play_options);
    qoro::CacheOptions cache_options;
    CLI::App* const cache = app.add_subcommand("cache");
    qoro::add_cache_options(*cache, cache_options);
#endif
    qoro::SimulateOptions simulate_options;
    qoro::add_simulate_options(*app.add_subcommand("simulate"), simulate_options);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return refuse(first_line(error.what()));
    }

#ifdef QORO_DESKTOP
    if (play->parsed())
        return qoro::play(play_options);
    if (cache->parsed())
        return qoro::cache_command(cache_options);
#endif
    return qoro::simulate_command(simulate_options);
}
} // namespace

int main(int argc, char** argv)
{
    // A closed output pipe must not end the process before it restores the system volume.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const qoro::InputError& error) {
        return refuse(error.what());
    } catch (const std::exception& error) {
        std::cerr << "qoro-ad: " << error.what() << '\n';
        return 1;
    }
}
