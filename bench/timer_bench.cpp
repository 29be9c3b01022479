// Accuracy of a repeating timer of the desktop's main loop, compared with GLib's own repeating timeout in the same
// loop:
//
//   timer_bench [SECONDS [VIDEO]]
//
// SECONDS (default 30): how long both fire every 100 ms. VIDEO: path of a file to play meanwhile, at 375x211. Prints
// for each the lateness against start + n × interval (median and 99th percentile) and the drift at the end.

#include "desktop/GlibLoop.h"
#include "desktop/media/GstPlayer.h"

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

namespace
{

constexpr double Interval = 0.1;

struct Quiet final : qoro::PlayerListener {
    void load_state_changed() override {}
    void playback_state_changed() override {}
    void finished(qoro::MPMovieFinishReason) override {}
};

/// Firing times of a timer, in seconds after its start.
struct Firings {
    const qoro::GlibLoop& loop;
    const double start = loop.now();
    std::vector<double> at{};

    void fired() { at.push_back(loop.now() - start); }

    void print(const char* name) const
    {
        std::vector<double> late;
        for (std::size_t n = 0; n < at.size(); ++n)
            late.push_back((at[n] - static_cast<double>(n + 1) * Interval) * 1000);
        if (late.empty())
            return;
        const double drift = late.back();
        std::sort(late.begin(), late.end());
        std::printf("%-14s %6zu %14.3f %14.3f %14.3f\n", name, late.size(), late[late.size() / 2],
                    late[late.size() * 99 / 100], drift);
    }
};

gboolean peer_fired(gpointer firings)
{
    static_cast<Firings*>(firings)->fired();
    return G_SOURCE_CONTINUE;
}

} // namespace

int main(int argc, char** argv)
{
    const double seconds = argc > 1 ? std::atof(argv[1]) : 30;
    qoro::GlibLoop loop;
    Quiet quiet;
    std::unique_ptr<qoro::GstPlayer> player;
    if (argc > 2) {
        player =
            std::make_unique<qoro::GstPlayer>(qoro::NSURL::fileURLWithPath(argv[2]), quiet, loop,
                                              qoro::GstPlayer::Options{.on_failure = {}, .volume = {}, .silent = true});
        player->set_picture_size(375, 211);
        player->on_frame = [&] { player->latest_frame(); };
        player->play();
        loop.run_until([&] { return player->current_time() > 0.5; }, 5);
    }

    Firings ours{loop};
    Firings peer{loop};
    const guint peer_timer = g_timeout_add(static_cast<guint>(Interval * 1000), peer_fired, &peer);
    loop.start_timer(Interval, true, [&] { ours.fired(); });
    loop.start_timer(seconds, false, [&] { loop.quit(); });
    loop.run();
    g_source_remove(peer_timer);

    std::printf("%-14s %6s %14s %14s %14s\n", "timer", "fired", "late p50 ms", "late p99 ms", "drift ms");
    ours.print("this loop's");
    peer.print("GLib's");
    return 0;
}
