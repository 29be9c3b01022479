// An application with its own window that opens a video ad and prints how the ad ended:
// host AD.json [--no-web-sandbox]
#include <qoro/Desktop.h>
#include <qoro/OpenedAd.h>
#include <qoro/ServedAd.h>

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
    if (outcome.error)
        std::cout << "  " << *outcome.error << '\n';
    for (const qoro::PlayedVideo& video : outcome.videos)
        std::cout << "  played " << video.played << " s of " << video.duration.value_or(0)
                  << (video.reached_end ? " s, to the end\n" : " s\n");
    std::cout << "  clicked through " << outcome.click_throughs << " times\n";
}

void host(const char* ad_file, bool sandboxed)
{
    qoro::Desktop desktop({.unsandboxed_pages = !sandboxed});
    const qoro::ServedAd served(ad_file);
    show_own_window();
    desktop.show();
    qoro::OpenedAd ad(desktop.platform(), served.ad(), [&desktop](const qoro::AdOutcome& outcome) {
        say_how_it_ended(outcome);
        desktop.quit();
    });
    desktop.on_close([&ad] { ad.close(qoro::ClosedBy::Viewer); });
    desktop.run();
}
} // namespace

int main(int count, char** words)
{
    if (count < 2) {
        std::cerr << "usage: host AD.json [--no-web-sandbox]\n";
        return 2;
    }
    try {
        host(words[1], count < 3 || std::strcmp(words[2], "--no-web-sandbox") != 0);
    } catch (const std::exception& problem) {
        std::cerr << problem.what() << '\n';
        return 1;
    }
}
