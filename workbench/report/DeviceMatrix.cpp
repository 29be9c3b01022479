#include "workbench/report/DeviceMatrix.h"

#include "simulator/Simulation.h"
#include "views/Turns.h"
#include "workbench/SessionRecord.h"
#include "workbench/report/VideoTrack.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>

namespace qoro
{

namespace
{

/// Microseconds: what is misplaced for a shorter time while the ad is laid out anew is not noticed.
constexpr std::int64_t ShortestFault = 100000;

constexpr std::array Holdings{Holding::Upright, Holding::Turned, Holding::TurnedInUprightHost,
                              Holding::TurnedInTurnedHost};

bool same(const SafeAreaInsets& a, const SafeAreaInsets& b)
{
    return std::tie(a.top, a.left, a.bottom, a.right) == std::tie(b.top, b.left, b.bottom, b.right);
}

bool same_screen(const MatrixEntry& entry, const DeviceModel& model, const SafeAreaInsets& insets)
{
    return entry.screen == model.screen && entry.phone == model.phone && same(entry.insets, insets);
}

ScenarioText session_on(const ScenarioText& scenario, const DeviceModel& model, Holding holding)
{
    ScenarioText session = scenario;
    const double end = session.end();
    const bool keeps_steps = session.string("/video/mode") == "manual";
    const bool turned = holding != Holding::Upright;
    if (!keeps_steps) {
        session.clear_steps();
        // A controller that is created turns the device upright: the device is turned before the ad opens.
        if (holding == Holding::TurnedInUprightHost)
            session.add_step(0, "device", R"({"orientation": 3})");
        else if (turned)
            session.add_step(0, "device", R"({"orientation": 3, "statusBarOrientation": 3})");
        session.add_step(0, "open", "0");
        session.add_step(std::max(end, 1.0), "device", "{}");
    }
    session.set_device(model, keeps_steps && turned ? UIDeviceOrientationLandscapeLeft : UIDeviceOrientationPortrait);
    if (holding == Holding::TurnedInUprightHost)
        session.lock_host(false);
    else if (holding == Holding::TurnedInTurnedHost)
        session.lock_host(true);
    return session;
}

/// The part of the screen in which nothing covers a control, on the upright screen.
CGRect safe_area(CGSize screen, const SafeAreaInsets& insets, int turn)
{
    const double angle = turn * std::numbers::pi / 180;
    const CGSize held = turned_extents(screen, CGAffineTransformMakeRotation(angle).angle);
    const CGSize size{held.width - insets.left - insets.right, held.height - insets.top - insets.bottom};
    const CGPoint center{(insets.left - insets.right) / 2, (insets.top - insets.bottom) / 2};
    const CGPoint offset = qoro::turned(center, CGAffineTransformMakeRotation(-angle).angle);
    const CGSize extents = turned_extents(size, CGAffineTransformMakeRotation(-angle).angle);
    return {screen.width / 2 + offset.x - extents.width / 2, screen.height / 2 + offset.y - extents.height / 2,
            extents.width, extents.height};
}

/// @return what the viewer sees at the moment to draw; null without one
const Sight* find_faults(MatrixEntry& entry, const SessionRecord& record, const CGRect& safe)
{
    const Sight* to_draw = nullptr;
    std::size_t most = 0;
    std::size_t most_controls = 0;
    for (std::size_t i = 0; i < record.sights.size(); ++i) {
        const Sight& sight = record.sights[i];
        const std::int64_t until = i + 1 < record.sights.size() ? record.sights[i + 1].at : record.end;
        if (!sight.open || sight.other_screen || until - sight.at < ShortestFault)
            continue;
        std::size_t here = 0;
        for (const SeenControl& control : sight.controls)
            for (const ControlFault fault : faults_of(control, entry.screen, safe)) {
                ++here;
                const bool known = std::ranges::any_of(entry.faults, [&](const MisplacedControl& other) {
                    return other.name == control.name && other.fault == fault;
                });
                if (!known)
                    entry.faults.push_back({control.name, fault, control.frame, sight.at});
            }
        if (std::pair(here, sight.controls.size()) > std::pair(most, most_controls)) {
            most = here;
            most_controls = sight.controls.size();
            to_draw = &sight;
        }
    }
    return to_draw;
}

/// Marks what is misplaced at the moment that is drawn, where it is then.
void mark_drawn(MatrixEntry& entry, const Sight& drawn, const CGRect& safe)
{
    for (const SeenControl& control : drawn.controls)
        for (const ControlFault fault : faults_of(control, entry.screen, safe))
            for (MisplacedControl& known : entry.faults)
                if (known.name == control.name && known.fault == fault) {
                    known.drawn = true;
                    known.frame = control.frame;
                }
}

void open_on(MatrixEntry& entry, const ScenarioText& scenario, const DeviceModel& model, Draughtsman& draughtsman)
{
    const Scenario session = session_on(scenario, model, entry.holding).scenario();
    int turn = 0;
    const SessionRecord record =
        record_session(session, [&turn](Simulation& simulation) { turn = turn_of(simulation.platform()); });
    const CGRect safe = safe_area(entry.screen, entry.insets, turn);
    const Sight* drawn = find_faults(entry, record, safe);
    if (!drawn)
        return;
    entry.at = drawn->at;
    mark_drawn(entry, *drawn, safe);
    // Only this moment is drawn: descriptions of every other would fill the report.
    record_session(session, [&](Simulation& simulation) {
        if (simulation.platform().loop().now_microseconds() != entry.at)
            return;
        entry.drawing = draughtsman.draw(simulation);
        VideoTrack video;
        video.look(simulation, entry.at);
        entry.position = video.points().front().position;
        entry.source = video.sources().empty() ? "" : video.sources().front();
    });
}

} // namespace

std::vector<MatrixEntry> device_matrix(const ScenarioText& scenario, Draughtsman& draughtsman)
{
    std::vector<MatrixEntry> entries;
    for (const Holding holding : Holdings)
        for (const DeviceModel& model : device_models()) {
            if (model.scale <= 0)
                continue;
            const SafeAreaInsets& insets = holding == Holding::Upright ? model.portrait : model.landscape;
            const auto known = std::ranges::find_if(entries, [&](const MatrixEntry& entry) {
                return entry.holding == holding && same_screen(entry, model, insets);
            });
            if (known != entries.end()) {
                known->models.emplace_back(model.name);
                continue;
            }
            MatrixEntry& entry = entries.emplace_back();
            entry.models.emplace_back(model.name);
            entry.screen = model.screen;
            entry.insets = insets;
            entry.phone = model.phone;
            entry.holding = holding;
            open_on(entry, scenario, model, draughtsman);
        }
    return entries;
}

} // namespace qoro
