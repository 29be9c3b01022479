#include "app/CommandLine.h"
#include "app/DesktopProgram.h"
#include "formats/InputError.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <iostream>
#include <string>
#include <string_view>

#ifdef __SANITIZE_ADDRESS__
/// Leak suppressions match the allocating frames; in GLib only the slow unwinder finds them. Ten frames suffice and
/// cost a third less time than the default of thirty. Suppressed leaks of libraries are no line on standard error. The
/// sanitizer guesses the address of the thread-local memory of a library that is loaded late; a wrong guess crashes.
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0:malloc_context_size=10:print_suppressions=0:intercept_tls_get_addr=0";
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

#ifdef QORO_LIGHT
/// The commands that may need nothing of the desktop.
bool is_light(std::string_view command)
{
    return command == "simulate" || command == "explore" || command == "shrink" || command == "merge";
}
#endif

int run(int argc, char** argv)
{
#ifdef QORO_LIGHT
    if (argc < 2 || !is_light(argv[1]))
        qoro::run_desktop_program(argv);
#endif
    qoro::CommandLine line;
    try {
        line.description().parse(argc, argv);
    } catch (const CLI::Success& answered) { // --help, --version
        return line.description().exit(answered);
    } catch (const CLI::ParseError& error) {
        return refuse(first_line(error.what()));
    }
#ifdef QORO_LIGHT
    if (!line.needs_no_desktop())
        qoro::run_desktop_program(argv);
#endif
    return line.run();
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
