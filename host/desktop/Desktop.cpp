#include "host/desktop/Desktop.h"

#include "desktop/DesktopPlatform.h"
#include "desktop/screen/DisplayWatch.h"
#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"
#include "platform/HostCall.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace qoro
{

namespace
{

/// Starts GTK, which the platform requires, and translates the options.
DesktopPlatform::Options started(const DesktopOptions& options)
{
    if (options.prepare_program)
        prepare_program();
    if (!start_toolkit())
        throw std::runtime_error("there is no display");
    if (options.unsandboxed_pages)
        give_up_sandbox();
    DesktopPlatform::Options platform;
    platform.covered = options.over;
    platform.device.facts = options.device;
    platform.device.orientation = options.orientation;
    if (std::ranges::find(options.autorotates, options.orientation) != options.autorotates.end())
        platform.device.status_bar_orientation = static_cast<UIInterfaceOrientation>(options.orientation);
    platform.device.autorotates = options.autorotates;
    platform.system_volume = options.system_volume;
    platform.silent = options.silent;
    platform.volume = options.volume;
    platform.last_requests_seconds = options.last_requests_seconds;
    platform.allow_private_network = options.allow_private_network;
    if (!options.video_cache_folder.empty())
        platform.video_cache.folder = options.video_cache_folder;
    platform.video_cache.most_bytes = options.video_cache_bytes;
    if (options.warn)
        platform.video_cache.warn = [warn = options.warn](const std::string& line) {
            call_host("DesktopOptions::warn", nullptr, [&] { warn(line); });
        };
    platform.calendar.allowed = options.calendar;
    platform.pages.memory = options.page_memory;
    platform.pages.processor_seconds = options.page_processor_seconds;
    return platform;
}

} // namespace

Desktop::Desktop(const DesktopOptions& options) : platform_(std::make_unique<DesktopPlatform>(started(options)))
{
}

Desktop::~Desktop() = default;

Platform& Desktop::platform()
{
    return *platform_;
}

void Desktop::show()
{
    platform_->show();
}

void Desktop::hide()
{
    platform_->display().hide();
}

void Desktop::set_title(const std::string& title)
{
    platform_->display().set_title(title);
}

void Desktop::on_close(std::function<void()> closed)
{
    if (!closed) {
        platform_->display().on_close = nullptr;
        return;
    }
    platform_->display().on_close = [this, closed = std::move(closed)] {
        call_host("Desktop::on_close", platform_.get(), closed);
    };
}

void Desktop::on_display_lost(std::function<void()> lost)
{
    display_watch_.reset();
    if (lost)
        display_watch_ = std::make_unique<DisplayWatch>([this, lost = std::move(lost)] {
            // A callback that has thrown may not have quit the loop, which runs nothing else by now.
            if (!call_host("Desktop::on_display_lost", platform_.get(), lost))
                platform_->loop().quit();
        });
}

std::string Desktop::snapshot_png(const std::string& path)
{
    return platform_->display().snapshot_png(path);
}

void Desktop::run()
{
    platform_->loop().run();
}

void Desktop::quit()
{
    platform_->loop().quit();
}

void Desktop::leave_app()
{
    platform_->leave_app();
}

void Desktop::return_to_app()
{
    platform_->return_to_app();
}

void Desktop::turn(UIDeviceOrientation orientation)
{
    platform_->device().turn(orientation);
}

void Desktop::add_video_copy(const std::string& address, const std::string& path)
{
    platform_->add_video_copy(address, path);
}

void Desktop::set_origin_headers(const std::vector<OriginHeaders>& origins)
{
    platform_->set_origin_headers(origins);
}

} // namespace qoro
