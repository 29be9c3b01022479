#include "app/Play.h"

#include "app/GraphicsCard.h"
#include "app/PlayInput.h"
#include "app/PlayedSession.h"
#include "app/TraceFile.h"
#include "desktop/glib/StartupTrace.h"
#include "desktop/media/Pipeline.h"
#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"
#include "formats/AdInput.h"
#include "formats/InputError.h"

#include <glib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <future>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

namespace qoro
{

namespace
{
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
    if (!options.startup_file.empty() && !trace_startup(options.startup_file))
        throw InputError(options.startup_file, "", std::strerror(errno));
    options.ad_file = ad_file_of(given.ad_file);
    PlayInput input = read_play_input(options);
    startup_point("input read");
    if (!options.out_folder.empty())
        make_folder(options.out_folder);
    std::optional<TraceFile> trace_file;
    if (!options.trace_file.empty())
        trace_file.emplace(options.trace_file);

    // Desktops know the window's application by this name, not by that of the program that qoro-ad becomes.
    g_set_prgname("qoro-ad");
    // The page of a tag is not known yet.
    const bool pages = !input.ad || input.ad->strWebViewUrl;
    const bool card = has_graphics_card();
    prepare_program(pages && card);
    if (!card)
        composite_pages_without_card();
    // Loading the decoders takes longest. GStreamer starts before the toolkit, not beside it: both register fundamental
    // types, and GObject does not assign the numbers of these atomically.
    Pipeline::warm_up();
    // The sandbox is tried meanwhile. For the page of an in-app browser it is tried when that page loads.
    std::future<bool> sandbox =
        std::async(std::launch::async, [&] { return !pages || options.no_web_sandbox || sandbox_works(); });
    if (!start_toolkit())
        return lacks("there is no display to open a window on");
    startup_point("toolkit started");
    if (options.no_web_sandbox) {
        std::cerr << "qoro-ad: the page runs without a sandbox\n";
        give_up_sandbox();
    }
    PlayedSession session(options, std::move(input), std::move(trace_file));
    if (!sandbox.get())
        return lacks("the page's sandbox does not work here; --no-web-sandbox goes on without one, "
                     "for pages that you trust");
    startup_point("sandbox tried");
    return session.run();
}

} // namespace qoro
