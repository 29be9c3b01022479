#pragma once

#include "desktop/device/OrientationSensor.h"
#include "platform/Ports.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// The device that the desktop window shows, and the host application on it.
struct DesktopDeviceOptions {
    /// By default invented ones: nothing about this machine goes into a tracker.
    DeviceFacts facts = {};
    /// UIDeviceOrientation
    int orientation = 1;
    /// UIInterfaceOrientation
    int status_bar_orientation = 1;
    bool status_bar_hidden = false;
    /// UIInterfaceOrientations to which the host turns by itself.
    std::vector<std::int64_t> autorotates{1, 3, 4};
    /// Beginnings of the addresses that can be opened; absent: those for whose scheme this machine has a program.
    std::optional<std::vector<std::string>> can_open = {};
};

/// What changes on a device at once; absent what stays.
struct DeviceUpdate {
    std::optional<int> orientation = {};
    std::optional<int> status_bar_orientation = {};
    std::optional<bool> status_bar_hidden = {};
};

class DesktopDevice : public Device
{
public:
    /// @param platform is told of changes, through its loop and display
    DesktopDevice(Platform& platform, DesktopDeviceOptions options);

    const DeviceFacts& facts() const override { return options_.facts; }
    int orientation() const override { return options_.orientation; }
    void force_orientation(int orientation) override;
    int status_bar_orientation() const override { return options_.status_bar_orientation; }
    bool status_bar_hidden() const override { return options_.status_bar_hidden; }
    bool can_open(const NSURL& address) override;
    /// With this machine's program for the scheme. Files of this machine are never opened.
    void open(const NSURL& address) override;
    /// Done as soon as the program has been started, or could not be: nobody tells when the viewer is done there.
    void open_and_wait(const NSURL& address, std::function<void()> done) override;

    const std::vector<std::int64_t>& autorotates() const { return options_.autorotates; }

    /// Someone turns the device: its orientation changes, then, where the host allows that interface orientation, the
    /// status bar's.
    void turn(int device_orientation);
    /// By a quarter from how it is held now.
    void turn_clockwise();
    void turn_counterclockwise();
    /// A new orientation of the status bar is reported, as an event of its own; no other change is.
    void change(const DeviceUpdate& change);
    /// Turns the device with this machine, where it has a sensor for that.
    void follow_sensor();

private:
    void launch(const NSURL& address, std::function<void()> done);

    Platform& platform_;
    DesktopDeviceOptions options_;
    /// The last orientation in which it was not lying flat: 1 to 4.
    int held_ = 1;
    std::unique_ptr<OrientationSensor> sensor_;
    /// Dies with the device; what comes back from a program watches it.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>();
};

} // namespace qoro
