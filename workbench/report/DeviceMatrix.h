#pragma once

#include "formats/DeviceModels.h"
#include "platform/Geometry.h"
#include "platform/SafeArea.h"
#include "workbench/ControlFaults.h"
#include "workbench/ScenarioText.h"
#include "workbench/report/Drawing.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// How a device is held, and what its host application allows.
enum class Holding { Upright, Turned, TurnedInUprightHost, TurnedInTurnedHost };

/// What is wrong with a control on a device.
struct MisplacedControl {
    /// Of its field.
    std::string_view name;
    ControlFault fault{};
    /// On the upright screen, in points.
    CGRect frame;
    /// Microseconds: when this was first so.
    std::int64_t at = 0;
    /// Whether it is so at the moment that is drawn.
    bool drawn = false;
};

/// The ad on one device, held in one way.
struct MatrixEntry {
    /// Models with the same screen.
    std::vector<std::string> models;
    CGSize screen;
    /// As the viewer holds the device.
    SafeAreaInsets insets;
    bool phone = true;
    Holding holding = Holding::Upright;
    /// Microseconds: the moment that is drawn. The first with the most faults, or else with the most controls.
    std::int64_t at = 0;
    Drawing drawing;
    /// Position of the video then, in seconds.
    double position = 0;
    /// Address of the video then; empty without one.
    std::string source;
    std::vector<MisplacedControl> faults;
};

/// Opens an ad on every model whose safe areas are known and in each holding, and watches it as long as its scenario
/// lasts. The scenario's own steps are not taken, unless its player acts on them.
std::vector<MatrixEntry> device_matrix(const ScenarioText& scenario, Draughtsman& draughtsman);

} // namespace qoro
