#pragma once

#include "app/FileWatch.h"
#include "app/Report.h"
#include "desktop/net/ContextThread.h"
#include "workbench/BaseScenario.h"
#include "workbench/check/Check.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qoro
{

/// The ad of a studio: read again when a file of its folder changes, and looked at in the background. Main thread only.
class StudioAd
{
public:
    /// What takes too long for the main thread. Of one version of the ad.
    struct Findings {
        CheckResult checked;
        /// As matrix_data().
        std::string matrix;
        /// By the address of the video.
        std::map<std::string, std::vector<VideoStill>> stills;
    };

    /// Reads the ad.
    /// @param options outlives the object
    /// @param changed called when a file has changed, whether or not the ad can be read
    /// @param looked called when the findings have become known
    /// @throws InputError for an ad that cannot be read
    StudioAd(const ReportOptions& options, std::function<void()> changed, std::function<void()> looked);

    /// The last version that could be read.
    const BaseScenario& base() const { return base_; }
    /// Why the present version cannot be read: one line; empty if it can.
    const std::string& complaint() const { return complaint_; }
    /// Null until they are known; the first call for a version of the ad begins to look for them.
    const Findings* findings();
    /// As findings(), computed now if need be.
    const Findings& wait_for_findings();
    /// Reads the ad again, and reports as for a changed file: what a tag leads to changes without one.
    void read_again();
    /// A report's parts for a session of the ad, without findings and frames of the video.
    ReportParts parts(ScenarioText scenario) const;

private:
    /// Frames of the videos' files, by path, time of the last change and size. Used in the background only.
    using Stills = std::map<std::string, std::vector<VideoStill>>;

    void read();
    void watch_files();
    void look();
    static Findings look_at(const BaseScenario& base, const ReportOptions& options, Stills& stills);

    const ReportOptions& options_;
    const std::function<void()> changed_;
    const std::function<void()> looked_;
    BaseScenario base_;
    std::string complaint_;
    bool reads_ = false;
    /// Something has changed while the ad was being read.
    bool is_outdated_ = false;
    /// Of the ad; an older one's findings are dropped.
    unsigned version_ = 0;
    /// Whether this version's findings are being looked for.
    bool looks_ = false;
    std::shared_ptr<const Findings> findings_;
    std::shared_ptr<Stills> stills_ = std::make_shared<Stills>();
    FileWatch files_;
    /// Ends with the object: what the thread reports then is dropped.
    std::shared_ptr<StudioAd*> self_ = std::make_shared<StudioAd*>(this);
    ContextThread thread_{"qoro studio"};
};

} // namespace qoro
