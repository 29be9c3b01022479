// An application with its own window that opens a video ad and prints how the ad ended:
// host AD.json [--no-web-sandbox]
#include "desktop/DesktopPlatform.h"
#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"
#include "host/OpenedAd.h"
#include "host/desktop/ServedAd.h"

#include <gtk/gtk.h>

#include <cstring>
#include <exception>
#include <iostream>

namespace
{
void show_own_window()
{
    GtkWidget* window = gtk_window_new();
    gtk_window_set_title(GTK_WINDOW(window), "The host application");
    gtk_window_set_default_size(GTK_WINDOW(window), 320, 240);
    gtk_window_set_child(GTK_WINDOW(window), gtk_label_new("An ad is shown beside this window."));
    gtk_window_present(GTK_WINDOW(window));
}

void say_how_it_ended(const qoro::AdOutcome& outcome)
{
    std::cout << "The ad was " << words_for(outcome.end) << " after " << outcome.lasted << " s\n";
    for (const qoro::PlayedVideo& video : outcome.videos)
        std::cout << "  played " << video.played << " s of " << video.duration.value_or(0)
                  << (video.reached_end ? " s, to the end\n" : " s\n");
    std::cout << "  clicked through " << outcome.click_throughs << " times\n";
}

int host(const char* ad_file)
{
    qoro::DesktopPlatform platform({});
    const qoro::ServedAd served(ad_file);
    show_own_window();
    platform.display().show();
    qoro::OpenedAd ad(platform, served.ad(), [&](const qoro::AdOutcome& outcome) {
        say_how_it_ended(outcome);
        platform.loop().quit();
    });
    platform.display().on_close = [&] { ad.close(); };
    platform.loop().run();
    return 0;
}
} // namespace

int main(int count, char** words)
{
    if (count < 2 || !qoro::start_toolkit())
        return 2;
    if (count > 2 && !std::strcmp(words[2], "--no-web-sandbox"))
        qoro::give_up_sandbox();
    try {
        return host(words[1]);
    } catch (const std::exception& problem) {
        std::cerr << problem.what() << '\n';
        return 1;
    }
}
