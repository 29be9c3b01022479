#pragma once

#include "desktop/glib/Owned.h"

#include <functional>
#include <map>
#include <string>

typedef struct _GFileMonitor GFileMonitor;

namespace qoro
{

/// Watches files and reports once that some have changed, when no more changes follow for a moment: an editor changes a
/// file in several operations, and a program that builds an ad writes several files. Main thread only.
class FileWatch
{
public:
    /// @param changed called as an event of GLib's main loop
    explicit FileWatch(std::function<void()> changed) : changed_(std::move(changed)) {}
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// Watches a file, which need not exist. No effect for a file that is watched already.
    void add(const std::string& path);

private:
    struct Signals;

    const std::function<void()> changed_;
    std::map<std::string, ObjectRef<GFileMonitor>> monitors_;
    SourceId quiet_;
    Connections connections_;
};

} // namespace qoro
