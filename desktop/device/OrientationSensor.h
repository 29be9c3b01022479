#pragma once

#include "platform/Orientation.h"

#include <functional>
#include <memory>

typedef struct _GDBusConnection GDBusConnection;

namespace qoro
{

/// The machine's orientation sensor, provided by iio-sensor-proxy on the system bus. Without a sensor there are no
/// reports. All bus calls are asynchronous.
class OrientationSensor
{
public:
    /// Receives the orientation of the machine: upright, upside down, or lying on one of its sides. Called on the main
    /// loop, for changes only: the machine's initial orientation says nothing about how the viewer wants to see the
    /// device.
    using OnTurn = std::function<void(UIDeviceOrientation)>;

    /// Uses the system bus.
    explicit OrientationSensor(OnTurn on_turn);
    /// Uses the caller's bus.
    OrientationSensor(GDBusConnection* bus, OnTurn on_turn);
    ~OrientationSensor();

private:
    struct State;
    const std::unique_ptr<State> state_;
};

} // namespace qoro
