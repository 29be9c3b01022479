#pragma once

#include "desktop/device/OrientationSensor.h"
#include "desktop/glib/Liveness.h"
#include "platform/Ports.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// Shows addresses instead of the machine's programs, for programs that test ads. Empty functions take no address.
struct StandInProgram {
    /// Whether it shows an address.
    /// @param address not null
    /// @param waits whether the ad waits until the viewer is back, as for a message composer and a store
    std::function<bool(const NSURL& address, bool waits)> takes = {};
    /// Shows an address that it takes.
    /// @param closed to be called when the viewer has closed it; may be empty
    std::function<void(const NSURL& address, std::function<void()> closed)> show = {};
};

/// The device that the desktop window shows, and the host application on it.
struct DesktopDeviceOptions {
    /// Made-up values by default, so that trackers carry no information about this machine.
    DeviceFacts facts = {};
    UIDeviceOrientation orientation = UIDeviceOrientationPortrait;
    UIInterfaceOrientation status_bar_orientation = UIInterfaceOrientationPortrait;
    bool status_bar_hidden = false;
    /// UIInterfaceOrientations to which the host rotates automatically.
    std::vector<std::int64_t> autorotates{1, 3, 4};
    /// Prefixes of the addresses that can be opened. Absent: the addresses whose scheme has a program on this machine.
    std::optional<std::vector<std::string>> can_open = {};
    /// Takes the place of the machine's programs.
    StandInProgram stand_in = {};
};

/// Changes of a device that apply together; absent values stay as they are.
struct DeviceUpdate {
    std::optional<UIDeviceOrientation> orientation = {};
    std::optional<UIInterfaceOrientation> status_bar_orientation = {};
    std::optional<bool> status_bar_hidden = {};
};

/// The emulated device. Main thread only.
class DesktopDevice : public Device
{
public:
    /// @param platform notified of changes through its loop and display
    DesktopDevice(Platform& platform, DesktopDeviceOptions options);

    const DeviceFacts& facts() const override { return options_.facts; }
    UIDeviceOrientation orientation() const override { return options_.orientation; }
    void force_orientation(UIDeviceOrientation orientation) override;
    UIInterfaceOrientation status_bar_orientation() const override { return options_.status_bar_orientation; }
    bool status_bar_hidden() const override { return options_.status_bar_hidden; }
    bool can_open(const NSURL& address) override;
    /// Opens an address with the machine's program for its scheme. Local files are never opened.
    void open(const NSURL& address) override;
    /// Calls `done` as soon as the program has started or failed to start: the desktop does not report when the viewer
    /// is finished with it. A stand-in reports it.
    void open_and_wait(const NSURL& address, std::function<void()> done) override;

    /// UIInterfaceOrientations to which the host rotates automatically.
    const std::vector<std::int64_t>& autorotates() const { return options_.autorotates; }

    /// Called when the status bar has rotated, as an event of its own after its report: receives the
    /// interface orientation before it. May be empty.
    std::function<void(UIInterfaceOrientation from)> on_interface_rotated;

    /// Becomes a device whose screen fills a window, held as the window lies: a tablet if the shorter side has at least
    /// 600 points. Nothing is reported: no ad may be open.
    /// @param window its size in points, not empty
    void fill(CGSize window);
    /// Holds the device in the orientation in which the viewer begins: as turn(), but no interface has rotated.
    void hold(UIDeviceOrientation device_orientation);
    /// Rotates the device: its orientation changes, then the status bar's if the host permits that interface
    /// orientation.
    void turn(UIDeviceOrientation device_orientation);
    /// Rotates by a quarter turn from the current orientation.
    void turn_clockwise();
    void turn_counterclockwise();
    /// Applies a change. A new device orientation and a new status bar orientation are each reported as an event of
    /// their own, and the latter to on_interface_rotated; a change of status_bar_hidden is not reported.
    void change(const DeviceUpdate& change);
    /// Rotates the device with this machine if it has an orientation sensor.
    void follow_sensor();

private:
    DeviceUpdate update_for(UIDeviceOrientation device_orientation) const;
    void apply(const DeviceUpdate& change);
    bool has_stand_in(const NSURL& address, bool waits) const;
    void launch(const NSURL& address, std::function<void()> done);

    Platform& platform_;
    DesktopDeviceOptions options_;
    /// The last orientation in which the device was not lying flat.
    UIDeviceOrientation held_ = UIDeviceOrientationPortrait;
    std::unique_ptr<OrientationSensor> sensor_;
    /// For pending program launches.
    Liveness<DesktopDevice> liveness_{*this};
};

} // namespace qoro
