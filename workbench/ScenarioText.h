#pragma once

#include "formats/DeviceModels.h"
#include "formats/Scenario.h"
#include "platform/Orientation.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// A scenario as text that can be changed. Places in it are JSON paths (RFC 6901): "/ad/iCloseBtnCountdown". Values are
/// JSON texts. A copy is independent of the original.
class ScenarioText
{
public:
    /// @param file name for error messages
    /// @throws InputError for text that is not a JSON object
    explicit ScenarioText(std::string_view text, const std::string& file = "scenario");
    ScenarioText(const ScenarioText& other);
    ScenarioText& operator=(const ScenarioText& other);
    ScenarioText(ScenarioText&& other) noexcept;
    ScenarioText& operator=(ScenarioText&& other) noexcept;
    ~ScenarioText();

    /// Indented, with a line break at the end.
    std::string text() const;
    /// The session that it describes.
    /// @throws InputError for an invalid scenario
    Scenario scenario() const;

    /// Whether there is such a place; none for a text that is no path.
    bool has(const std::string& path) const;
    /// Absent if there is no such place.
    std::optional<std::string> value(const std::string& path) const;
    /// The text at a place; absent if there is none, or none there.
    std::optional<std::string> string(const std::string& path) const;
    /// Replaces or adds a value; creates the objects on the way. Behind a list's end it does nothing.
    void set(const std::string& path, const std::string& json);
    /// Does nothing if there is no such place.
    void remove(const std::string& path);
    /// The paths of an object's values or a list's entries, in order; empty for anything else.
    std::vector<std::string> children(const std::string& path) const;

    /// A device of this model, held in an orientation from the session's start. The host's root view fills its screen.
    void set_device(const DeviceModel& model, UIDeviceOrientation held = UIDeviceOrientationPortrait);
    /// The host allows only the upright orientation, or only the two landscape ones.
    void lock_host(bool landscape);
    /// An interruption of the video's data.
    /// @param at position in seconds
    void add_stall(double at, double seconds);
    /// The video fails permanently at a position in seconds; at 0 it never loads.
    void fail_video(double at);
    /// A server does not answer, or answers after so many seconds.
    /// @{
    void fail_answer(const std::string& address, const std::string& reason);
    void delay_answer(const std::string& address, double seconds);
    /// @}

    /// No steps at all.
    void clear_steps();
    /// Appends a step.
    /// @param at seconds
    /// @param json the step's value
    void add_step(double at, const std::string& key, const std::string& json);
    std::size_t steps() const;
    /// Time of the last step in seconds; 0 without one.
    double end() const;

    bool operator==(const ScenarioText& other) const;

private:
    struct Document;
    std::unique_ptr<Document> document_;
};

/// One segment more in a JSON path: ("/steps", "a/b") → "/steps/a~1b".
std::string path_under(const std::string& path, std::string_view key);

} // namespace qoro
