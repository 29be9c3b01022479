#pragma once

#include <functional>
#include <memory>

typedef struct _GDBusConnection GDBusConnection;

namespace qoro
{

/// The machine's orientation sensor, as iio-sensor-proxy offers it on the system's bus. Where there is none, nothing is
/// ever heard of it. Nothing waits for the bus.
class OrientationSensor
{
public:
    /// Gets the UIDeviceOrientation to which the machine was turned: 1 upright, 2 upside down, 3 its top to the left, 4
    /// its top to the right. Called on the main loop, for changes alone: how the machine lies at first says nothing
    /// about how the viewer wants to see the device.
    using OnTurn = std::function<void(int)>;

    /// Listens on the system's bus.
    explicit OrientationSensor(OnTurn on_turn);
    /// Listens on a bus of the caller's.
    OrientationSensor(GDBusConnection* bus, OnTurn on_turn);
    ~OrientationSensor();

private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace qoro
