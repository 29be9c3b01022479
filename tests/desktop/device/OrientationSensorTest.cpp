#include "desktop/device/OrientationSensor.h"
#include "desktop/GlibLoop.h"

#include <gtest/gtest.h>

#include <gio/gio.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace qoro;

namespace
{
constexpr double Deadline = 90;

GDBusConnection* connect_to(GTestDBus* bus)
{
    return g_dbus_connection_new_for_address_sync(
        g_test_dbus_get_bus_address(bus),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr);
}

/// A fake of the net.hadess.SensorProxy service on a D-Bus.
class SensorService
{
public:
    explicit SensorService(GTestDBus* bus) : connection_(connect_to(bus))
    {
        static constexpr const char* Description =
            "<node><interface name='net.hadess.SensorProxy'>"
            "<method name='ClaimAccelerometer'/><method name='ReleaseAccelerometer'/>"
            "<property name='AccelerometerOrientation' type='s' access='read'/></interface></node>";
        static const GDBusInterfaceVTable table = {called, asked, nullptr, {}};
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(Description, nullptr);
        object_ = g_dbus_connection_register_object(connection_, "/net/hadess/SensorProxy", node->interfaces[0], &table,
                                                    this, nullptr, nullptr);
        g_dbus_node_info_unref(node);
        name_ = g_bus_own_name_on_connection(connection_, "net.hadess.SensorProxy", G_BUS_NAME_OWNER_FLAGS_NONE,
                                             nullptr, nullptr, nullptr, nullptr);
    }
    ~SensorService()
    {
        g_bus_unown_name(name_);
        g_dbus_connection_unregister_object(connection_, object_);
        g_object_unref(connection_);
    }

    void turn_to(const std::string& reading)
    {
        reading_ = reading;
        GVariantBuilder changed;
        g_variant_builder_init(&changed, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&changed, "{sv}", "AccelerometerOrientation", g_variant_new_string(reading.c_str()));
        g_dbus_connection_emit_signal(
            connection_, nullptr, "/net/hadess/SensorProxy", "org.freedesktop.DBus.Properties", "PropertiesChanged",
            g_variant_new("(sa{sv}as)", "net.hadess.SensorProxy", &changed, nullptr), nullptr);
    }

    int claims = 0;

private:
    static void called(GDBusConnection*, const char*, const char*, const char*, const char* method, GVariant*,
                       GDBusMethodInvocation* invocation, gpointer self)
    {
        static_cast<SensorService*>(self)->claims += method == std::string("ClaimAccelerometer") ? 1 : -1;
        g_dbus_method_invocation_return_value(invocation, nullptr);
    }
    static GVariant* asked(GDBusConnection*, const char*, const char*, const char*, const char*, GError**,
                           gpointer self)
    {
        return g_variant_new_string(static_cast<SensorService*>(self)->reading_.c_str());
    }

    GDBusConnection* const connection_;
    std::string reading_ = "normal";
    guint object_ = 0;
    guint name_ = 0;
};

class OrientationSensorTest : public testing::Test
{
protected:
    OrientationSensorTest()
    {
        g_test_dbus_up(bus);
        client = connect_to(bus);
        sensor.emplace(client, [this](int orientation) { turns.push_back(orientation); });
    }
    ~OrientationSensorTest() override
    {
        sensor.reset();
        service.reset();
        g_object_unref(client);
        g_test_dbus_stop(bus);
        g_object_unref(bus);
    }

    void start_service()
    {
        service.emplace(bus);
        ASSERT_TRUE(loop.run_until([this] { return service->claims == 1; }, Deadline));
    }
    bool turned(const std::vector<int>& expected)
    {
        return loop.run_until([&] { return turns == expected; }, Deadline);
    }

    GTestDBus* bus = g_test_dbus_new(G_TEST_DBUS_NONE);
    GlibLoop loop;
    GDBusConnection* client = nullptr;
    std::optional<SensorService> service;
    std::optional<OrientationSensor> sensor;
    std::vector<int> turns;
};
} // namespace

TEST_F(OrientationSensorTest, EachTurnIsReportedAsTheDevicesOrientation)
{
    start_service();
    service->turn_to("right-up");
    EXPECT_TRUE(turned({3}));
    service->turn_to("bottom-up");
    EXPECT_TRUE(turned({3, 2}));
    service->turn_to("left-up");
    EXPECT_TRUE(turned({3, 2, 4}));
    service->turn_to("normal");
    EXPECT_TRUE(turned({3, 2, 4, 1}));
}

TEST_F(OrientationSensorTest, AnUndefinedReadingReportsNothing)
{
    start_service();
    service->turn_to("undefined");
    service->turn_to("left-up");
    EXPECT_TRUE(turned({4}));
}

TEST_F(OrientationSensorTest, TheSensorIsReleasedWhenItsListenerIsDestroyed)
{
    start_service();
    sensor.reset();
    EXPECT_TRUE(loop.run_until([this] { return service->claims == 0; }, Deadline));
}

TEST_F(OrientationSensorTest, AReturningSensorIsReadAgain)
{
    start_service();
    service->turn_to("left-up");
    EXPECT_TRUE(turned({4}));
    service.reset();
    start_service();
    service->turn_to("right-up");
    EXPECT_TRUE(loop.run_until([this] { return !turns.empty() && turns.back() == 3; }, Deadline));
}
