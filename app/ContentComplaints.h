#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "platform/Events.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace qoro
{

/// Names on standard error what of a played ad did not load, with the property that asks for it; each line once.
class ContentComplaints
{
public:
    /// An ad opens.
    /// @param file of the ad, for the lines
    /// @param missing_files lines about files that are missing, which have been written
    void begin(std::string file, std::vector<std::string> missing_files);
    /// The ad before the session changes it, with absolute addresses. Without it, as for a tag, no property is named.
    void set_ad(std::shared_ptr<const QoroVideoAd> authored) { authored_ = std::move(authored); }

    /// Takes the failures of pages and videos from the session's events.
    void receive(const Event& event);
    /// @param address of what did not load
    /// @param reason one line
    void content_failed(const std::string& address, const std::string& reason);
    /// The duration of a video is known, in seconds; the first is that of the ad's own.
    void duration_known(double duration);

private:
    void report(const std::string& line);
    bool is_missing(const std::string& place) const;
    void video_failed(const std::string& reason);

    std::string file_;
    std::vector<std::string> missing_files_;
    std::shared_ptr<const QoroVideoAd> authored_;
    bool duration_known_ = false;
    /// Lines that have been written.
    std::set<std::string> reported_;
};

} // namespace qoro
