#include "app/Cache.h"

#include "app/Interruption.h"
#include "app/Progress.h"
#include "app/SignalMask.h"
#include "desktop/cache/VideoCache.h"
#include "desktop/cache/VideoDownload.h"
#include "desktop/glib/Owned.h"
#include "desktop/net/HttpAddress.h"
#include "desktop/net/Reach.h"
#include "formats/InputError.h"

#include <CLI/CLI.hpp>
#include <glib.h>
#include <nlohmann/json.hpp>

#include <charconv>
#include <chrono>
#include <iostream>
#include <stop_token>
#include <thread>

namespace qoro
{

namespace
{
constexpr const char* Description = "List, fill or empty the cache of videos that ads may play instead of streaming";

constexpr const char* Advice =
    "An ad with \"bIsUseVideoCache\" plays the copy of its video when there is one; playing an ad makes none.\n"
    "docs/cache.md says what is kept and how.\n\n"
    "Exit status: 0; 1 a video could not be had, or the cache can't be used (a line on standard error for each);\n"
    "2 an address or an option is not usable.\n";

constexpr std::uint64_t Megabyte = 1'000'000;
constexpr std::int64_t Microsecond = 1000;

/// "2026-03-01T09:30:00Z"
std::string date_of(std::int64_t nanoseconds)
{
    const Owned<GDateTime, g_date_time_unref> moment(
        g_date_time_new_from_unix_utc(nanoseconds / 1'000'000 / Microsecond));
    return take_text(g_date_time_format(moment.get(), "%Y-%m-%dT%H:%M:%SZ"));
}

std::string size_of(std::uint64_t bytes)
{
    return take_text(g_format_size(bytes));
}

void list(const VideoCache& cache, bool as_json)
{
    for (const CachedVideo& video : cache.videos()) {
        if (as_json)
            std::cout << nlohmann::ordered_json{{"address", video.address},
                                                {"bytes", video.length},
                                                {"lastUse", date_of(video.last_use)},
                                                {"path", video.path}}
                             .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
                      << '\n';
        else
            std::cout << date_of(video.last_use) << "  " << video.length << " bytes  " << video.address << '\n';
    }
}

/// Cancels a download when the program is to end.
std::jthread watch_signals(VideoDownload& download)
{
    static constexpr std::chrono::milliseconds Interval{50};
    const SignalMask of_the_thread;
    return std::jthread([&download](const std::stop_token& over) {
        while (!over.stop_requested() && !Interruption::requested())
            std::this_thread::sleep_for(Interval);
        if (Interruption::requested())
            download.cancel();
    });
}

int prefetch(VideoCache& cache, const std::vector<std::string>& addresses)
{
    for (const std::string& address : addresses)
        if (!HttpAddress::parse(address))
            throw InputError("cache prefetch", "", "expected an address of http or https, got \"" + address + "\"");
    int status = 0;
    // An address that the user names may be anywhere; a redirect must not lead inside a private network.
    const ReachRule rule(NetworkZone::Public);
    const NamedHosts named(addresses);
    VideoDownload download;
    const std::jthread signals = watch_signals(download);
    Progress progress;
    for (const std::string& address : addresses) {
        progress.set(address);
        const VideoDownload::Result result =
            download.fetch(cache, address, [&](std::uint64_t bytes, std::uint64_t all) {
                progress.set(size_of(bytes) + " of " + size_of(all) + "  " + address);
            });
        progress.clear();
        if (Interruption::requested())
            break;
        if (!result.error.empty()) {
            std::cerr << "qoro-ad: " << address << ": " << result.error << std::endl;
            status = 1;
            continue;
        }
        std::cout << (result.was_there ? "there already  " : "fetched  ") << result.length << " bytes  " << address
                  << std::endl;
    }
    return status;
}

void empty(VideoCache& cache)
{
    const VideoCache::Removed removed = cache.empty();
    std::cout << "removed " << removed.videos << (removed.videos == 1 ? " video, " : " videos, ")
              << size_of(removed.bytes) << '\n';
}

std::string check_format(const std::string& name)
{
    return name == "json" || name == "text" ? "" : "expected json or text, got \"" + name + "\"";
}

std::string check_megabytes(const std::string& text)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool good = error == std::errc() && end == text.data() + text.size() && number >= 1 && number <= 1'000'000;
    return good ? "" : "expected a whole number of megabytes from 1 to 1000000, got \"" + text + "\"";
}
} // namespace

void add_cache_options(CLI::App& command, CacheOptions& options)
{
    command.description(Description);
    command.footer(Advice);
    command.require_subcommand(1);
    command
        .add_option("--dir", options.folder,
                    "The cache's folder; by default qoro-ad/videos in the user's cache directory")
        ->type_name("DIR");

    CLI::App& list = *command.add_subcommand("list", "A line for each copy: its last use, its size, its address");
    list.fallthrough();
    list.add_option_function<std::string>(
            "--format", [&options](const std::string& name) { options.json = name == "json"; },
            "An object a line, or a line to read; text unless told")
        ->type_name("json|text")
        ->check(CLI::Validator(check_format, ""));
    list.callback([&options] { options.what = CacheOptions::Do::List; });

    CLI::App& prefetch = *command.add_subcommand("prefetch", "Fetch videos that are not there yet; a line for each");
    prefetch.fallthrough();
    prefetch.add_option("addresses", options.addresses, "The videos, as the ads name them: http or https")
        ->type_name("ADDRESS")
        ->required();
    prefetch
        .add_option("--limit", options.most_megabytes,
                    "Megabytes of all copies together; those not used for the longest time go first")
        ->type_name("MB")
        ->check(CLI::Validator(check_megabytes, ""));
    prefetch.callback([&options] { options.what = CacheOptions::Do::Prefetch; });

    CLI::App& empty = *command.add_subcommand("empty", "Remove all copies, and say how many there were");
    empty.fallthrough();
    empty.callback([&options] { options.what = CacheOptions::Do::Empty; });
}

int cache_command(const CacheOptions& options)
{
    VideoCache::Options of_cache;
    if (!options.folder.empty())
        of_cache.folder = options.folder;
    if (options.most_megabytes)
        of_cache.most_bytes = *options.most_megabytes * Megabyte;
    VideoCache cache(std::move(of_cache));
    switch (options.what) {
    case CacheOptions::Do::List:
        list(cache, options.json);
        return 0;
    case CacheOptions::Do::Prefetch: {
        const Interruption interruption;
        const int status = prefetch(cache, options.addresses);
        Interruption::end_program();
        return status;
    }
    case CacheOptions::Do::Empty:
        empty(cache);
        return 0;
    }
    return 0;
}

} // namespace qoro
