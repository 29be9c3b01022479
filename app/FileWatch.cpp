#include "app/FileWatch.h"

#include <gio/gio.h>

#include <filesystem>

namespace qoro
{

namespace
{

/// Milliseconds without a change after which the files count as complete.
constexpr unsigned Quiet = 250;

} // namespace

struct FileWatch::Signals {
    static void changed(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent event, FileWatch* watch)
    {
        if (event != G_FILE_MONITOR_EVENT_ATTRIBUTE_CHANGED)
            watch->quiet_.reset(g_timeout_add(Quiet, settled, watch));
    }

    static gboolean settled(void* data)
    {
        auto* watch = static_cast<FileWatch*>(data);
        watch->quiet_.forget();
        watch->changed_();
        return G_SOURCE_REMOVE;
    }
};

void FileWatch::add(const std::string& path)
{
    const std::string absolute = std::filesystem::absolute(path).lexically_normal().string();
    if (monitors_.contains(absolute))
        return;
    const auto file = adopt(g_file_new_for_path(absolute.c_str()));
    auto monitor = adopt(g_file_monitor_file(file.get(), G_FILE_MONITOR_WATCH_MOVES, nullptr, nullptr));
    if (monitor)
        connections_.add(monitor.get(), "changed", Signals::changed, this);
    monitors_.emplace(absolute, std::move(monitor));
}

} // namespace qoro
