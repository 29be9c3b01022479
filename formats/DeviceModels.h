#pragma once

#include "platform/Geometry.h"
#include "platform/SafeArea.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qoro
{

/// The screen of a device model.
struct DeviceModel {
    /// As on the command line; empty for a device given by its size.
    std::string_view name = {};
    /// Points, in portrait.
    CGSize screen = {};
    /// Pixels per point; 0 when unknown.
    double scale = 0;
    /// Whether it is a phone rather than a tablet.
    bool phone = true;
    /// Zero when unknown.
    /// @{
    SafeAreaInsets portrait = {};
    SafeAreaInsets landscape = {};
    /// @}
};

/// The named models.
///
/// Sizes, scales and insets of the iPhone and iPad models: Apple's Human Interface Guidelines, Layout, Specifications,
/// and the insets that iOS reports for a full-screen view. Android models: pixels of the makers' specifications,
/// divided by the density; a status bar of 24 and a navigation bar of 48 dp (Material Design, Layout), the latter
/// beside the screen's content in landscape.
std::span<const DeviceModel> device_models();

/// A model by its name or by its size ("375x812"); absent for any other text. A device given by its size is a tablet if
/// its shorter edge has at least 600 points.
std::optional<DeviceModel> device_model(const std::string& name);

} // namespace qoro
