#pragma once

#include "formats/DeviceModels.h"
#include "workbench/ScenarioText.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// A fault of an ad, as its report lists it.
struct ListedFinding {
    enum class Severity { Note, Warning, Error };

    /// Identifier of the rule.
    std::string rule;
    Severity severity = Severity::Warning;
    /// One plain sentence.
    std::string sentence;
    /// Microseconds since the session's start; absent for one that belongs to no moment.
    std::optional<std::int64_t> at = {};
};

/// A frame of the ad's video.
struct VideoStill {
    /// Position in the video, in seconds.
    double at = 0;
    /// A JPEG or PNG file.
    std::string bytes;
};

/// What a report is made of.
struct ReportParts {
    /// Of the ad, for the heading.
    std::string title;
    ScenarioText scenario;
    /// For the heading and the safe areas; absent: a screen of the scenario's size, without any.
    std::optional<DeviceModel> device = {};
    std::vector<ListedFinding> findings = {};
    /// What is assumed, and what the ad contains without effect; a line each.
    std::vector<std::string> remarks = {};
    /// Takes frames of the video of an address, at most so many, in the order of their positions; none of a video whose
    /// file is not at hand, which is drawn as an area. May be empty.
    std::function<std::vector<VideoStill>(const std::string& address, std::size_t most)> stills_of = {};
};

/// Simulates the session, and the ad on each device of the matrix.
/// @return everything that the page shows, as a JSON object without "<"; the same parts give the same bytes
/// @throws InputError for an invalid scenario
std::string report_data(const ReportParts& parts);

/// As report_data(), of the session alone: the lists of other devices and of frames of videos are empty. Takes about as
/// long as the simulation.
std::string session_data(const ReportParts& parts);

/// The parts' findings and remarks, as in report_data(): {"findings": […], "remarks": […]}.
std::string lists_data(const ReportParts& parts);

/// The ad on each device of the matrix, and the frames of the session's videos.
/// @return a JSON object without "<": "matrix", "stills" and "sources" as in report_data(), with tables "views" and
///         "pictures" of its own
/// @throws InputError for an invalid scenario
std::string matrix_data(const ReportParts& parts);

/// The report as one HTML file, which loads nothing.
/// @param data as report_data()
std::string report_page(const std::string& title, const std::string& data);

} // namespace qoro
