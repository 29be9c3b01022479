// An application with a window of its own. "Show ad" opens a video ad over the window; when it has ended, the window
// says how: host AD.json [--no-web-sandbox]
#include <qoro/Desktop.h>
#include <qoro/OpenedAd.h>
#include <qoro/ServedAd.h>

#include <gtk/gtk.h>

#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{

std::string words_of(const qoro::AdOutcome& outcome)
{
    std::ostringstream words;
    words << "The ad was " << words_for(outcome.end) << " after " << outcome.lasted << " s\n";
    if (outcome.error)
        words << "  " << *outcome.error << '\n';
    for (const qoro::PlayedVideo& video : outcome.videos)
        words << "  played " << video.played << " s of " << video.duration.value_or(0)
              << (video.reached_end ? " s, to the end\n" : " s\n");
    words << "  clicked through " << outcome.click_throughs << " times\n";
    return words.str();
}

class Application
{
public:
    Application(const char* ad_file, bool sandboxed)
        : served_(ad_file), window_(new_window()), desktop_({.over = window_, .unsandboxed_pages = !sandboxed})
    {
        GtkWidget* column = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
        GtkWidget* button = gtk_button_new_with_label("Show ad");
        gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
        gtk_widget_set_halign(button, GTK_ALIGN_CENTER);
        gtk_widget_set_vexpand(button, TRUE);
        gtk_box_append(GTK_BOX(column), button);
        gtk_box_append(GTK_BOX(column), label_);
        gtk_window_set_child(window_, column);
        g_signal_connect_swapped(button, "clicked", G_CALLBACK(+[](Application* self) { self->show_ad(); }), this);
        g_signal_connect_swapped(window_, "destroy", G_CALLBACK(+[](Application* self) { self->desktop_.quit(); }),
                                 this);
        gtk_window_present(window_);
    }

    void run() { desktop_.run(); }

private:
    static GtkWindow* new_window()
    {
        if (!gtk_init_check())
            throw std::runtime_error("there is no display");
        GtkWindow* window = GTK_WINDOW(gtk_window_new());
        gtk_window_set_title(window, "The host application");
        gtk_window_set_default_size(window, 420, 760);
        return window;
    }

    void show_ad()
    {
        desktop_.show();
        desktop_.set_title("Advertisement");
        ad_ = std::make_unique<qoro::OpenedAd>(desktop_.platform(), served_.ad(),
                                               [this](const qoro::AdOutcome& outcome) { ended(outcome); });
    }

    void ended(const qoro::AdOutcome& outcome)
    {
        ad_.reset();
        desktop_.hide();
        gtk_label_set_text(GTK_LABEL(label_), words_of(outcome).c_str());
        std::cout << words_of(outcome) << std::flush;
    }

    const qoro::ServedAd served_;
    GtkWindow* const window_;
    GtkWidget* const label_ = gtk_label_new(nullptr);
    qoro::Desktop desktop_;
    std::unique_ptr<qoro::OpenedAd> ad_;
};

} // namespace

int main(int count, char** words)
{
    if (count < 2) {
        std::cerr << "usage: host AD.json [--no-web-sandbox]\n";
        return 2;
    }
    try {
        Application(words[1], count < 3 || std::strcmp(words[2], "--no-web-sandbox") != 0).run();
    } catch (const std::exception& problem) {
        std::cerr << problem.what() << '\n';
        return 1;
    }
}
