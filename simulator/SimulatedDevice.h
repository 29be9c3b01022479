#pragma once

#include "formats/Steps.h"
#include "formats/World.h"
#include "platform/Ports.h"

namespace qoro
{

class Platform;
class VirtualLoop;

/// The device that the setup describes. Opening an address has no effect.
class SimulatedDevice final : public Device
{
public:
    /// @param setup outlives the device
    explicit SimulatedDevice(const DeviceSetup& setup);

    const DeviceFacts& facts() const override { return setup_.facts; }
    UIDeviceOrientation orientation() const override { return orientation_; }
    void force_orientation(UIDeviceOrientation orientation) override { orientation_ = orientation; }
    UIInterfaceOrientation status_bar_orientation() const override { return status_bar_orientation_; }
    bool status_bar_hidden() const override { return status_bar_hidden_; }
    bool can_open(const NSURL& address) override;
    void open(const NSURL& address) override;
    /// The viewer stays away: a step closes the screen that waits.
    void open_and_wait(const NSURL&, std::function<void()>) override {}

    /// Changes the device's and the status bar's orientation without posting. Returns whether the status bar's
    /// orientation changed.
    bool turn(const DeviceChange& change);

private:
    const DeviceSetup& setup_;
    UIDeviceOrientation orientation_;
    UIInterfaceOrientation status_bar_orientation_;
    bool status_bar_hidden_;
};

/// A calendar that accepts every event, if the setup has one, and stores nothing.
class SimulatedCalendar final : public Calendar
{
public:
    explicit SimulatedCalendar(const DeviceSetup& setup) : available_(setup.calendar) {}

    bool available() override { return available_; }
    NSString add(const CalendarEvent&) override { return available_ ? NSString() : "this device has no calendar"; }

private:
    const bool available_;
};

/// The output volume. Each change is reported as a separate event at the same virtual time.
class SimulatedVolume final : public OutputVolume
{
public:
    SimulatedVolume(Platform& owner, VirtualLoop& loop, const DeviceSetup& setup);

    float value() const override { return value_; }
    void set_value(float volume) override;
    bool has_slider() const override { return has_slider_; }

private:
    Platform& owner_;
    VirtualLoop& loop_;
    float value_;
    const bool has_slider_;
};

} // namespace qoro
