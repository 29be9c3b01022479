#include "app/ContentComplaints.h"

#include "formats/AdAddresses.h"
#include "formats/AdRemarks.h"

#include <algorithm>
#include <iostream>
#include <utility>
#include <variant>

namespace qoro
{

void ContentComplaints::begin(std::string file, std::vector<std::string> missing_files)
{
    file_ = std::move(file);
    missing_files_ = std::move(missing_files);
    authored_.reset();
    duration_known_ = false;
    reported_.clear();
}

void ContentComplaints::receive(const Event& event)
{
    if (const auto* page = std::get_if<event::PageFailed>(&event))
        content_failed(std::string(page->url.view()), std::string(page->reason.view()));
    else if (const auto* video = std::get_if<event::PlayerFailed>(&event))
        video_failed(std::string(video->reason.view()));
}

void ContentComplaints::report(const std::string& line)
{
    if (reported_.insert(line).second)
        std::cerr << "qoro-ad: " << line << std::endl;
}

/// Whether a file of the ad's folder is missing, which has been said at the start.
/// @param place "ad.json: /strWebViewUrl: "
bool ContentComplaints::is_missing(const std::string& place) const
{
    return std::ranges::any_of(missing_files_, [&place](const std::string& line) { return line.starts_with(place); });
}

/// Names the ad's property whose content did not load.
void ContentComplaints::content_failed(const std::string& address, const std::string& reason)
{
    std::string place;
    if (authored_)
        visit_addresses(*authored_, [&](AdAddressUse use, const std::string& path, const std::string& one) {
            if (use == AdAddressUse::Content && place.empty() && one == address)
                place = file_ + ": " + path + ": ";
        });
    if (place.empty() || !is_missing(place))
        report(place + address + " did not load: " + reason);
}

void ContentComplaints::video_failed(const std::string& reason)
{
    if (!is_missing(file_ + ": /strVideoUrl: "))
        report("the video has failed: " + reason);
}

void ContentComplaints::duration_known(double duration)
{
    // Later players are those of the page's next videos and of replays.
    if (!authored_ || std::exchange(duration_known_, true))
        return;
    for (const std::string& line : remarks_on_duration(*authored_, file_, duration))
        report(line);
}

} // namespace qoro
