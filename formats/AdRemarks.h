#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"

#include <functional>
#include <string>
#include <vector>

namespace qoro
{

/// What an ad contains without effect, one line each with the file and the JSON path: unknown keys of buttons and their
/// calendar events, values of buttons of another type, unknown milestones, progress keys that are not whole seconds,
/// colours that are not decimal, negative pre-pause points.
/// @param file name for the lines
std::vector<std::string> ad_remarks(const QoroVideoAd& ad, const std::string& file);

/// What has no effect because the video ends before it, one line each as ad_remarks: pre-pause points and progress
/// trackers.
/// @param duration of the ad's video, seconds
std::vector<std::string> remarks_on_duration(const QoroVideoAd& ad, const std::string& file, double duration);

/// The files of the ad's own folder that the ad shows but that do not exist, one line each as ad_remarks. A link that
/// leads out of the folder counts as missing.
/// @param folder of the ad's relative addresses
/// @param provided whether the host has its own copy of an address; empty: it has none
std::vector<std::string> missing_files(const QoroVideoAd& ad, const std::string& file, const std::string& folder,
                                       const std::function<bool(const std::string& address)>& provided = {});

} // namespace qoro
