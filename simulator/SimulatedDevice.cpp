#include "simulator/SimulatedDevice.h"

#include "platform/Platform.h"
#include "simulator/VirtualLoop.h"

#include <algorithm>
#include <utility>

namespace qoro
{

SimulatedDevice::SimulatedDevice(const DeviceSetup& setup)
    : setup_(setup), orientation_(setup.orientation), status_bar_orientation_(setup.status_bar_orientation),
      status_bar_hidden_(setup.status_bar_hidden)
{
}

bool SimulatedDevice::can_open(const NSURL& address)
{
    return std::ranges::any_of(setup_.can_open, [&](const std::string& beginning) {
        return address.absoluteString().text().starts_with(beginning);
    });
}

void SimulatedDevice::open(const NSURL&)
{
}

bool SimulatedDevice::turn(const DeviceChange& change)
{
    orientation_ = change.orientation.value_or(orientation_);
    status_bar_hidden_ = change.status_bar_hidden.value_or(status_bar_hidden_);
    const UIInterfaceOrientation before =
        std::exchange(status_bar_orientation_, change.status_bar_orientation.value_or(status_bar_orientation_));
    return status_bar_orientation_ != before;
}

SimulatedVolume::SimulatedVolume(Platform& owner, VirtualLoop& loop, const DeviceSetup& setup)
    : owner_(owner), loop_(loop), value_(setup.output_volume), has_slider_(setup.volume_slider)
{
}

void SimulatedVolume::set_value(float volume)
{
    if (volume == value_)
        return;
    value_ = volume;
    loop_.post([owner = &owner_] { owner->output_volume_changed(); });
}

} // namespace qoro
