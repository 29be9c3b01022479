#include "desktop/device/OrientationSensor.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{
constexpr const char* SensorName = "net.hadess.SensorProxy";
constexpr const char* SensorPath = "/net/hadess/SensorProxy";
constexpr const char* OrientationProperty = "AccelerometerOrientation";

struct Row {
    /// The edge of the machine that points up.
    std::string_view reading;
    UIDeviceOrientation orientation;
};
constexpr auto Readings = std::to_array<Row>({{"normal", UIDeviceOrientationPortrait},
                                              {"bottom-up", UIDeviceOrientationPortraitUpsideDown},
                                              {"right-up", UIDeviceOrientationLandscapeLeft},
                                              {"left-up", UIDeviceOrientationLandscapeRight}});

UIDeviceOrientation orientation_of(std::string_view reading)
{
    const auto* row = std::ranges::find(Readings, reading, &Row::reading);
    return row == Readings.end() ? UIDeviceOrientationUnknown : row->orientation;
}
} // namespace

struct OrientationSensor::State {
    OnTurn on_turn;
    GCancellable* cancellable = g_cancellable_new();
    GDBusConnection* bus = nullptr;
    GDBusProxy* proxy = nullptr;
    guint watch = 0;
    UIDeviceOrientation last = UIDeviceOrientationUnknown;

    ~State()
    {
        g_cancellable_cancel(cancellable);
        if (watch)
            g_bus_unwatch_name(watch);
        lose();
        g_clear_object(&bus);
        g_object_unref(cancellable);
    }

    // Pending bus calls hold a weak pointer and do nothing once the state is destroyed.
    using Weak = std::weak_ptr<State>;
    static gpointer keep(const std::shared_ptr<State>& state) { return new Weak(state); }
    static void drop(gpointer weak) { delete static_cast<Weak*>(weak); }
    static std::shared_ptr<State> take(gpointer weak)
    {
        std::shared_ptr<State> state = static_cast<Weak*>(weak)->lock();
        drop(weak);
        return state;
    }

    static void listen(const std::shared_ptr<State>& state, GDBusConnection* on)
    {
        state->bus = G_DBUS_CONNECTION(g_object_ref(on));
        state->watch = g_bus_watch_name_on_connection(on, SensorName, G_BUS_NAME_WATCHER_FLAGS_AUTO_START, appeared,
                                                      vanished, keep(state), drop);
    }

    static void appeared(GDBusConnection* on, const char*, const char*, gpointer data)
    {
        const std::shared_ptr<State> state = static_cast<Weak*>(data)->lock();
        if (state)
            g_dbus_proxy_new(on, G_DBUS_PROXY_FLAGS_NONE, nullptr, SensorName, SensorPath, SensorName,
                             state->cancellable, proxy_made, keep(state));
    }

    static void vanished(GDBusConnection*, const char*, gpointer data)
    {
        if (const std::shared_ptr<State> state = static_cast<Weak*>(data)->lock())
            state->lose();
    }

    static void proxy_made(GObject*, GAsyncResult* result, gpointer data)
    {
        GDBusProxy* made = g_dbus_proxy_new_finish(result, nullptr);
        const std::shared_ptr<State> state = take(data);
        if (!state || !made) {
            g_clear_object(&made);
            return;
        }
        state->lose();
        state->proxy = made;
        g_signal_connect_swapped(made, "g-properties-changed", G_CALLBACK(+[](State* self) { self->read(); }),
                                 state.get());
        // iio-sensor-proxy reads the sensor only while a client claims it.
        g_dbus_proxy_call(made, "ClaimAccelerometer", nullptr, G_DBUS_CALL_FLAGS_NONE, -1, state->cancellable, claimed,
                          keep(state));
    }

    static void claimed(GObject* from, GAsyncResult* result, gpointer data)
    {
        GVariant* answer = g_dbus_proxy_call_finish(G_DBUS_PROXY(from), result, nullptr);
        const std::shared_ptr<State> state = take(data);
        if (state && answer)
            state->read();
        if (answer)
            g_variant_unref(answer);
    }

    void read()
    {
        GVariant* property = g_dbus_proxy_get_cached_property(proxy, OrientationProperty);
        if (!property)
            return;
        UIDeviceOrientation now = UIDeviceOrientationUnknown;
        if (g_variant_is_of_type(property, G_VARIANT_TYPE_STRING))
            now = orientation_of(g_variant_get_string(property, nullptr));
        g_variant_unref(property);
        if (now == UIDeviceOrientationUnknown || now == last)
            return;
        if (std::exchange(last, now) != UIDeviceOrientationUnknown)
            on_turn(now);
    }

    void lose()
    {
        if (!proxy)
            return;
        g_signal_handlers_disconnect_by_data(proxy, this);
        g_dbus_proxy_call(proxy, "ReleaseAccelerometer", nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr,
                          nullptr);
        g_clear_object(&proxy);
    }
};

OrientationSensor::OrientationSensor(OnTurn on_turn) : state_(std::make_shared<State>())
{
    state_->on_turn = std::move(on_turn);
    g_bus_get(
        G_BUS_TYPE_SYSTEM, state_->cancellable,
        [](GObject*, GAsyncResult* result, gpointer data) {
            GDBusConnection* bus = g_bus_get_finish(result, nullptr);
            const std::shared_ptr<State> state = State::take(data);
            if (state && bus)
                State::listen(state, bus);
            g_clear_object(&bus);
        },
        State::keep(state_));
}

OrientationSensor::OrientationSensor(GDBusConnection* bus, OnTurn on_turn) : state_(std::make_shared<State>())
{
    state_->on_turn = std::move(on_turn);
    State::listen(state_, bus);
}

OrientationSensor::~OrientationSensor() = default;

} // namespace qoro
