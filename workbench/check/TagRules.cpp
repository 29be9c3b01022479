#include "workbench/check/CheckedSession.h"
#include "workbench/check/RuleFunctions.h"

#include "platform/Numbers.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace qoro
{

namespace
{

/// Encoders round to even sizes.
constexpr double PixelTolerance = 2;
/// Part of a bitrate: it is an average, and containers add to it.
constexpr double BitrateTolerance = 0.25;
/// The position is checked once a second.
constexpr double SecondsTolerance = 1;

bool is_far(double one, double other, double tolerance)
{
    return std::abs(one - other) > tolerance;
}

} // namespace

std::vector<Suspicion> tag_without_ad(const CheckedSession& session)
{
    std::vector<Suspicion> suspicions;
    for (const CheckedLine& line : session.lines())
        if (line.what == "vast" && (line.act == "noAd" || line.act == "failed"))
            suspicions.push_back(
                {.sentence = (line.act == "noAd" ? "the tag leads to no ad: " : "an ad of the tag cannot be played: ") +
                             line.why,
                 .path = line.path,
                 .key = line.act + line.path + line.why,
                 .at = line.at});
    return suspicions;
}

std::vector<Suspicion> tag_ignored(const CheckedSession& session)
{
    std::vector<Suspicion> suspicions;
    for (const CheckedLine& line : session.lines())
        if (line.what == "vast" && line.act == "ignored")
            suspicions.push_back({.sentence = line.name + " has no effect: " + line.why,
                                  .path = line.path,
                                  .key = line.path + line.why,
                                  .at = line.at});
    return suspicions;
}

std::vector<Suspicion> media_file_contradicted(const BaseScenario& tag)
{
    std::vector<Suspicion> suspicions;
    for (const auto& [said, real] : tag.media_files) {
        const auto add = [&](const std::string& path, const std::string& says, const std::string& has) {
            suspicions.push_back(
                {.sentence = "the tag says " + says + ", but the file has " + has, .path = path, .key = path + says});
        };
        if (said.width && said.height && real.size.width > 0 && real.size.height > 0 &&
            (is_far(*said.width, real.size.width, PixelTolerance) ||
             is_far(*said.height, real.size.height, PixelTolerance)))
            add(said.path, std::to_string(*said.width) + " x " + std::to_string(*said.height) + " pixels",
                shortest_text(std::round(real.size.width)) + " x " + shortest_text(std::round(real.size.height)));
        const auto highest = said.max_bitrate ? said.max_bitrate : said.bitrate;
        // Of a range only the upper end is known.
        const bool too_high = highest && real.bitrate > *highest * (1 + BitrateTolerance);
        const bool too_low = said.bitrate && real.bitrate < *said.bitrate * (1 - BitrateTolerance);
        if (real.bitrate > 0 && highest && (too_high || too_low))
            add(said.path, std::to_string(said.bitrate && too_low ? *said.bitrate : *highest) + " kbit/s",
                shortest_text(std::round(real.bitrate)));
        if (said.duration && real.duration > 0 && is_far(*said.duration, real.duration, SecondsTolerance))
            add(said.path.substr(0, said.path.find("/MediaFiles")) + "/Duration",
                "a duration of " + seconds_text(*said.duration) + " s", seconds_text(real.duration) + " s");
    }
    return suspicions;
}

} // namespace qoro
