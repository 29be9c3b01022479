#include "desktop/device/OrientationSensor.h"

#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/Liveness.h"
#include "desktop/glib/Owned.h"

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
    const ObjectRef<GCancellable> cancellable = adopt(g_cancellable_new());
    ObjectRef<GDBusConnection> bus;
    ObjectRef<GDBusProxy> proxy;
    Connections changes; // of the proxy
    guint watch = 0;
    UIDeviceOrientation last = UIDeviceOrientationUnknown;
    /// For pending calls of the bus.
    Liveness<State> liveness{*this};
    using Pointer = Liveness<State>::Pointer;

    State() = default;
    ~State()
    {
        liveness.end();
        g_cancellable_cancel(cancellable.get());
        if (watch)
            g_bus_unwatch_name(watch);
        lose();
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void find_bus()
    {
        g_bus_get(G_BUS_TYPE_SYSTEM, cancellable.get(), async_done,
                  async_data(liveness.guard([](State& self, GObject*, GAsyncResult* result) {
                      if (auto found = adopt(g_bus_get_finish(result, nullptr)))
                          self.listen(std::move(found));
                  })));
    }

    void listen(ObjectRef<GDBusConnection> on)
    {
        bus = std::move(on);
        watch = g_bus_watch_name_on_connection(bus.get(), SensorName, G_BUS_NAME_WATCHER_FLAGS_AUTO_START, appeared,
                                               vanished, new Pointer(liveness.pointer()),
                                               [](gpointer self) { delete static_cast<Pointer*>(self); });
    }

    static void appeared(GDBusConnection* on, const char*, const char*, gpointer data)
    {
        if (State* self = static_cast<Pointer*>(data)->get())
            g_dbus_proxy_new(on, G_DBUS_PROXY_FLAGS_NONE, nullptr, SensorName, SensorPath, SensorName,
                             self->cancellable.get(), async_done,
                             async_data(self->liveness.guard([](State& state, GObject*, GAsyncResult* result) {
                                 if (auto made = adopt(g_dbus_proxy_new_finish(result, nullptr)))
                                     state.claim(std::move(made));
                             })));
    }

    static void vanished(GDBusConnection*, const char*, gpointer data)
    {
        if (State* self = static_cast<Pointer*>(data)->get())
            self->lose();
    }

    void claim(ObjectRef<GDBusProxy> made)
    {
        lose();
        proxy = std::move(made);
        changes.add(
            proxy.get(), "g-properties-changed", +[](GDBusProxy*, GVariant*, GStrv, State* self) { self->read(); },
            this);
        // iio-sensor-proxy reads the sensor only while a client claims it.
        g_dbus_proxy_call(proxy.get(), "ClaimAccelerometer", nullptr, G_DBUS_CALL_FLAGS_NONE, -1, cancellable.get(),
                          async_done, async_data(liveness.guard([](State& self, GObject* from, GAsyncResult* result) {
                              const Owned<GVariant, g_variant_unref> answer(
                                  g_dbus_proxy_call_finish(G_DBUS_PROXY(from), result, nullptr));
                              if (answer && self.proxy)
                                  self.read();
                          })));
    }

    void read()
    {
        const Owned<GVariant, g_variant_unref> property(
            g_dbus_proxy_get_cached_property(proxy.get(), OrientationProperty));
        if (!property)
            return;
        UIDeviceOrientation now = UIDeviceOrientationUnknown;
        if (g_variant_is_of_type(property.get(), G_VARIANT_TYPE_STRING))
            now = orientation_of(g_variant_get_string(property.get(), nullptr));
        if (now == UIDeviceOrientationUnknown || now == last)
            return;
        if (std::exchange(last, now) != UIDeviceOrientationUnknown)
            on_turn(now);
    }

    void lose()
    {
        if (!proxy)
            return;
        changes.clear();
        g_dbus_proxy_call(proxy.get(), "ReleaseAccelerometer", nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
                          nullptr, nullptr);
        proxy.reset();
    }
};

OrientationSensor::OrientationSensor(OnTurn on_turn) : state_(std::make_unique<State>())
{
    state_->on_turn = std::move(on_turn);
    state_->find_bus();
}

OrientationSensor::OrientationSensor(GDBusConnection* bus, OnTurn on_turn) : state_(std::make_unique<State>())
{
    state_->on_turn = std::move(on_turn);
    state_->listen(new_ref(bus));
}

OrientationSensor::~OrientationSensor() = default;

} // namespace qoro
