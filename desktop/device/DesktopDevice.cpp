#include "desktop/device/DesktopDevice.h"

#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/Owned.h"
#include "platform/Foundation.h"
#include "platform/Platform.h"
#include "platform/UIKit.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <utility>

namespace qoro
{

namespace
{
/// Shorter edge of the smallest tablet, in points.
constexpr double TabletEdge = 600;

struct Turned {
    UIDeviceOrientation clockwise;
    UIDeviceOrientation counterclockwise;
};
/// Indexed by the current UIDeviceOrientation, 1 to 4. A device whose top points left was rotated counter-clockwise.
constexpr std::array<Turned, 5> TurnedTable{{
    {},
    {UIDeviceOrientationLandscapeRight, UIDeviceOrientationLandscapeLeft},
    {UIDeviceOrientationLandscapeLeft, UIDeviceOrientationLandscapeRight},
    {UIDeviceOrientationPortrait, UIDeviceOrientationPortraitUpsideDown},
    {UIDeviceOrientationPortraitUpsideDown, UIDeviceOrientationPortrait},
}};

bool is_held(UIDeviceOrientation orientation)
{
    return orientation >= UIDeviceOrientationPortrait && orientation <= UIDeviceOrientationLandscapeRight;
}

bool has_program(const std::string& scheme)
{
    return adopt(g_app_info_get_default_for_uri_scheme(scheme.c_str())) != nullptr;
}
} // namespace

DesktopDevice::DesktopDevice(Platform& platform, DesktopDeviceOptions options)
    : platform_(platform), options_(std::move(options))
{
    if (is_held(options_.orientation))
        held_ = options_.orientation;
}

void DesktopDevice::force_orientation(UIDeviceOrientation orientation)
{
    options_.orientation = orientation;
    if (is_held(orientation))
        held_ = orientation;
    platform_.display().needs_display();
}

bool DesktopDevice::can_open(const NSURL& address)
{
    if (!address || address.is_file())
        return false;
    if (has_stand_in(address, false))
        return true;
    const std::string& text = address.absoluteString().text();
    if (options_.can_open)
        return std::ranges::any_of(*options_.can_open,
                                   [&text](const std::string& beginning) { return text.starts_with(beginning); });
    const std::string scheme = address.parts().scheme();
    return !scheme.empty() && scheme != "file" && has_program(scheme);
}

void DesktopDevice::open(const NSURL& address)
{
    launch(address, nullptr);
}

void DesktopDevice::open_and_wait(const NSURL& address, std::function<void()> done)
{
    launch(address,
           liveness_.guard([done = std::move(done)](DesktopDevice& self) { self.platform_.loop().post(done); }));
}

bool DesktopDevice::has_stand_in(const NSURL& address, bool waits) const
{
    return options_.stand_in.takes && options_.stand_in.takes(address, waits);
}

void DesktopDevice::launch(const NSURL& address, std::function<void()> done)
{
    if (!address || address.is_file() || address.parts().has_scheme("file")) {
        if (done)
            done();
        return;
    }
    if (has_stand_in(address, done != nullptr))
        return options_.stand_in.show(address, std::move(done));
    const std::string text = address.absoluteString().text();
    const auto opened = [text, done = std::move(done)](GObject*, GAsyncResult* result) {
        Error error;
        if (!g_app_info_launch_default_for_uri_finish(result, error.out()))
            g_message("%s was not opened: %s", text.c_str(), error.message());
        if (done)
            done();
    };
    g_app_info_launch_default_for_uri_async(text.c_str(), nullptr, nullptr, async_done, async_data(opened));
}

DeviceUpdate DesktopDevice::update_for(UIDeviceOrientation device_orientation) const
{
    DeviceUpdate turned{.orientation = device_orientation};
    if (std::ranges::find(options_.autorotates, device_orientation) != options_.autorotates.end())
        // An interface orientation has the number of the device orientation in which it is upright.
        turned.status_bar_orientation = static_cast<UIInterfaceOrientation>(device_orientation);
    return turned;
}

void DesktopDevice::fill(CGSize window)
{
    const auto [shorter, longer] = std::minmax(window.width, window.height);
    options_.facts.screen = CGSize{shorter, longer};
    options_.facts.phone = shorter < TabletEdge;
    const DeviceUpdate held =
        update_for(window.width > window.height ? UIDeviceOrientationLandscapeLeft : UIDeviceOrientationPortrait);
    options_.orientation = held_ = *held.orientation;
    options_.status_bar_orientation = held.status_bar_orientation.value_or(options_.status_bar_orientation);
}

void DesktopDevice::hold(UIDeviceOrientation device_orientation)
{
    apply(update_for(device_orientation));
}

void DesktopDevice::turn(UIDeviceOrientation device_orientation)
{
    change(update_for(device_orientation));
}

void DesktopDevice::turn_clockwise()
{
    turn(TurnedTable[static_cast<std::size_t>(held_)].clockwise);
}

void DesktopDevice::turn_counterclockwise()
{
    turn(TurnedTable[static_cast<std::size_t>(held_)].counterclockwise);
}

void DesktopDevice::change(const DeviceUpdate& change)
{
    const UIInterfaceOrientation before = options_.status_bar_orientation;
    apply(change);
    if (options_.status_bar_orientation == before)
        return;
    platform_.loop().post([this, before] {
        if (on_interface_rotated)
            on_interface_rotated(before);
    });
}

void DesktopDevice::apply(const DeviceUpdate& change)
{
    options_.status_bar_hidden = change.status_bar_hidden.value_or(options_.status_bar_hidden);
    const UIDeviceOrientation held_before =
        std::exchange(options_.orientation, change.orientation.value_or(options_.orientation));
    if (is_held(options_.orientation))
        held_ = options_.orientation;
    if (options_.orientation != held_before)
        platform_.loop().post([this] { platform_.device_orientation_changed(); });
    const UIInterfaceOrientation before = options_.status_bar_orientation;
    options_.status_bar_orientation = change.status_bar_orientation.value_or(before);
    if (options_.status_bar_orientation != before)
        platform_.loop().post([this] { platform_.status_bar_frame_changed(); });
    platform_.display().needs_display();
}

void DesktopDevice::follow_sensor()
{
    sensor_ = std::make_unique<OrientationSensor>([this](UIDeviceOrientation orientation) { turn(orientation); });
}

} // namespace qoro
