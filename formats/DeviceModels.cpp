#include "formats/DeviceModels.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace qoro
{

namespace
{

constexpr double ShortEdgeOfTablets = 600;
/// Larger than any monitor, and rendering costs time per pixel.
constexpr int LongestEdge = 4096;

/// A phone or tablet with a home button: only the status bar covers something.
constexpr SafeAreaInsets StatusBar{.top = 20};
/// A tablet without a home button, in both orientations.
constexpr SafeAreaInsets TabletEdges{.top = 24, .bottom = 20};
constexpr SafeAreaInsets AndroidPortrait{.top = 24, .bottom = 48};
constexpr SafeAreaInsets AndroidPhoneLandscape{.top = 24, .right = 48};

/// A phone whose camera lies in the screen.
constexpr SafeAreaInsets below_camera(double camera)
{
    return {.top = camera, .bottom = 34};
}
constexpr SafeAreaInsets beside_camera(double camera)
{
    return {.left = camera, .bottom = 21, .right = camera};
}

constexpr DeviceModel camera_phone(std::string_view name, CGSize screen, double scale, double camera)
{
    return {name, screen, scale, true, below_camera(camera), beside_camera(camera)};
}

constexpr DeviceModel android_phone(std::string_view name, CGSize screen, double scale)
{
    return {name, screen, scale, true, AndroidPortrait, AndroidPhoneLandscape};
}

constexpr auto Models = std::to_array<DeviceModel>({
    {"phone", {375, 812}},
    {"phone-small", {320, 568}},
    {"phone-classic", {375, 667}},
    {"phone-large", {414, 736}},
    {"phone-tall", {414, 896}},
    {"tablet", {768, 1024}, 0, false},
    {"tablet-large", {1024, 1366}, 0, false},

    {"iphone-se-1", {320, 568}, 2, true, StatusBar},
    {"iphone-se-3", {375, 667}, 2, true, StatusBar},
    {"iphone-8-plus", {414, 736}, 3, true, StatusBar},
    camera_phone("iphone-11", {414, 896}, 2, 48),
    camera_phone("iphone-11-pro", {375, 812}, 3, 44),
    camera_phone("iphone-11-pro-max", {414, 896}, 3, 44),
    camera_phone("iphone-13-mini", {375, 812}, 3, 50),
    camera_phone("iphone-14", {390, 844}, 3, 47),
    camera_phone("iphone-14-plus", {428, 926}, 3, 47),
    camera_phone("iphone-15", {393, 852}, 3, 59),
    camera_phone("iphone-15-pro-max", {430, 932}, 3, 59),
    camera_phone("iphone-16-pro", {402, 874}, 3, 62),
    camera_phone("iphone-16-pro-max", {440, 956}, 3, 62),
    {"ipad-9", {810, 1080}, 2, false, StatusBar, StatusBar},
    {"ipad-10", {820, 1180}, 2, false, TabletEdges, TabletEdges},
    {"ipad-mini-6", {744, 1133}, 2, false, TabletEdges, TabletEdges},
    {"ipad-pro-11", {834, 1194}, 2, false, TabletEdges, TabletEdges},
    {"ipad-pro-12.9", {1024, 1366}, 2, false, TabletEdges, TabletEdges},

    android_phone("pixel-5", {393, 851}, 2.75),
    android_phone("pixel-7", {412, 915}, 2.625),
    android_phone("pixel-7-pro", {412, 892}, 3.5),
    android_phone("pixel-8", {412, 915}, 2.625),
    android_phone("galaxy-a51", {412, 914}, 2.625),
    android_phone("galaxy-s20", {360, 800}, 4),
    android_phone("galaxy-s24", {360, 780}, 3),
    {"pixel-tablet", {800, 1280}, 2, false, AndroidPortrait, AndroidPortrait},
    {"galaxy-tab-s8", {800, 1280}, 2, false, AndroidPortrait, AndroidPortrait},
});

std::optional<int> edge(std::string_view text)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < 1 || number > LongestEdge)
        return std::nullopt;
    return number;
}

} // namespace

std::span<const DeviceModel> device_models()
{
    return Models;
}

std::optional<DeviceModel> device_model(const std::string& name)
{
    const auto* named = std::ranges::find(Models, name, &DeviceModel::name);
    if (named != Models.end())
        return *named;
    const std::size_t x = name.find('x');
    if (x == std::string::npos)
        return std::nullopt;
    const auto width = edge(std::string_view(name).substr(0, x));
    const auto height = edge(std::string_view(name).substr(x + 1));
    if (!width || !height)
        return std::nullopt;
    return DeviceModel{.screen = {static_cast<double>(*width), static_cast<double>(*height)},
                       .phone = std::min(*width, *height) < ShortEdgeOfTablets};
}

} // namespace qoro
