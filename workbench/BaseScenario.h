#pragma once

#include "formats/AdInput.h"
#include "formats/AdScenario.h"
#include "workbench/ScenarioText.h"

#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// A line about an ad, with its place.
struct PlacedRemark {
    /// JSON path in the ad; empty for the ad as a whole.
    std::string path;
    std::string text;

    bool operator==(const PlacedRemark&) const = default;
};

/// Reads a line of InputError's form: "ad.json: /path: text".
/// @param file name with which the line begins
PlacedRemark placed_remark(const std::string& line, const std::string& file);

/// A media file of a tag, and what it really is.
struct KnownMediaFile {
    TagDocuments::MediaFile said;
    VideoFacts real;
};

/// What a person names (an ad, a tag, a scenario) as the session that everything else starts from.
struct BaseScenario {
    InputKind kind = InputKind::Ad;
    /// Of the file, for places and messages; the address of a tag that is not a file.
    std::string file;
    /// The file's own text; empty for an address.
    std::string text;
    /// An ad's or a tag's: the viewer watches to the end, closes the ad, and the host releases it.
    ScenarioText scenario;
    /// What an ad contains without effect, and what is assumed.
    std::vector<PlacedRemark> remarks = {};
    /// Files that an ad lacks.
    std::vector<PlacedRemark> missing_files = {};
    /// Of an ad's video, as far as this machine can read it.
    std::optional<VideoFacts> video = {};
    /// The media files of a tag that are beside its file.
    std::vector<KnownMediaFile> media_files = {};
    /// Whether the video was looked at and cannot be played here.
    bool video_is_unreadable = false;

    /// Path of the ad's description in the file: "" of an ad file, "/ad" of a scenario.
    std::string ad_path() const { return kind == InputKind::Scenario ? "/ad" : ""; }
};

} // namespace qoro
