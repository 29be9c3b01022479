#pragma once

#include "formats/DeviceModels.h"
#include "platform/Geometry.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// What a player learns of a video.
struct VideoFacts {
    /// Seconds; 0 if the video has none.
    double duration = 0;
    /// Pixels, as displayed.
    CGSize size = {};
    /// Kilobits a second, of the whole file; 0 when unknown.
    double bitrate = 0;
};

/// What differs from a flawless session. Absent values: as in the ad's folder.
struct AdFaults {
    /// An interruption of the video's data.
    struct Stall {
        double seconds = 0;
        /// Position in seconds; absent: the middle of the video.
        std::optional<double> at = {};
    };
    /// What the server answers instead of a file.
    struct Answer {
        /// Why there is none; empty: the file is sent.
        std::string failure;
        /// Seconds until it arrives.
        double after = 0;
    };

    /// Seconds.
    std::optional<double> duration = {};
    /// Seconds until the video can play.
    std::optional<double> load_after = {};
    std::vector<Stall> stalls = {};
    /// Position in seconds at which the video fails once.
    std::optional<double> fails_at = {};
    /// Whether the video never plays.
    bool fails = false;
    /// By the name of the ad's property.
    std::map<std::string, Answer, std::less<>> answers = {};
};

/// What a scenario of an ad consists of.
struct AdScenarioParts {
    /// "-" for standard input, with the current folder as the ad's. Of a tag: its file or address, for messages.
    std::string ad_file;
    /// Its content; absent: it is read.
    std::optional<std::string> text = {};
    /// Empty: the viewer watches to the end, then closes the ad.
    std::string steps_file = {};
    /// Absent: a phone of 375 x 812 points.
    std::optional<DeviceModel> device = {};
    AdFaults faults = {};
    /// Finds out the facts of a video file; absent for a file without video. Empty: the duration must be given.
    std::function<std::optional<VideoFacts>(const std::string& path)> discover = {};
};

/// A scenario made of an ad and its folder.
struct AdScenario {
    /// As for read_scenario().
    std::string text;
    /// What the ad contains without effect, and what is assumed; a line each.
    std::vector<std::string> remarks;
    /// Files that the ad lacks; a line each.
    std::vector<std::string> missing_files;
};

/// A VAST tag, and what the servers answer on the way to its ads.
struct TagDocuments {
    struct Answer {
        std::string body = {};
        /// Why there is none; empty: the body is sent.
        std::string failure = {};
    };
    std::string address;
    /// At the address.
    Answer document = {};
    /// At the addresses that the documents give, with their macros.
    std::map<std::string, Answer> answers = {};
    struct Video {
        std::string address;
        /// Seconds; absent if the tag does not give it.
        std::optional<double> duration;
    };
    /// Of each ad that plays.
    std::vector<Video> videos = {};
    /// What the tag says of a media file; absent where it says nothing.
    struct MediaFile {
        std::string address;
        /// Pixels.
        /// @{
        std::optional<int> width = {};
        std::optional<int> height = {};
        /// @}
        /// Kilobits a second; of a range, the upper end.
        /// @{
        std::optional<int> bitrate = {};
        std::optional<int> max_bitrate = {};
        /// @}
        /// Seconds, of the creative.
        std::optional<double> duration = {};
        /// XPath of the element.
        std::string path = {};
    };
    /// Every media file of each ad that plays.
    std::vector<MediaFile> media_files = {};
    /// Addresses of pictures that the ads show.
    std::vector<std::string> pictures = {};
};

/// Makes a scenario of a tag, whose documents are its network. The device and the host are those of a played ad.
/// @param parts the tag's file is ad_file; discover and the answers of the faults have no effect
/// @throws InputError for invalid steps
AdScenario scenario_of_tag(const AdScenarioParts& parts, const TagDocuments& tag);

/// Makes a scenario of an ad. Its folder is the network: relative addresses are at http://ad.example, with the files
/// that the ad shows as answers. The device and the host are those of a played ad.
/// @throws InputError for an ad that cannot be played, for invalid steps, and if the duration is unknown
AdScenario scenario_of_ad(const AdScenarioParts& parts);

} // namespace qoro
