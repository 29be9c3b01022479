#pragma once

#include "platform/Export.h"

#include <optional>
#include <string>
#include <vector>

// A VAST document as data (IAB Tech Lab, Digital Video Ad Serving Template 2.0 to 4.3), read but not interpreted. Texts
// have no surrounding blanks; addresses keep their macros. Times are seconds.

namespace QORO_EXPORT qoro
{

namespace vast
{

/// Something of a document that has no effect.
struct Ignored {
    /// Name of the element or attribute.
    std::string element = {};
    /// Why, one line.
    std::string why = {};
    /// XPath of the element.
    std::string path = {};
    /// Whether all members are equal.
    friend bool operator==(const Ignored&, const Ignored&) = default;
};

/// A position in the video (VAST 4.3, sections 3.8.1 and 3.14.2): a time, or a part of the duration.
struct Offset {
    /// Seconds, or percent.
    double value = 0;
    /// Whether the value is percent.
    bool percent = false;
    /// @param duration of the video in seconds; absent while it is unknown
    /// @return seconds; absent for a part of an unknown duration
    std::optional<double> seconds(const std::optional<double>& duration) const;
    /// Whether all members are equal.
    friend bool operator==(const Offset&, const Offset&) = default;
};

/// An address that is requested when an event occurs.
struct Tracker {
    /// Name of the event, as the document gives it.
    std::string event = {};
    /// May be empty: the element names the event, and no address.
    std::string address = {};
    /// Of a progress event only.
    std::optional<Offset> offset = {};
};

/// A file of the video.
struct MediaFile {
    /// Of the file.
    std::string address = {};
    /// MIME type; empty when absent, as all texts here.
    std::string type = {};
    /// "progressive" or "streaming".
    std::string delivery = {};
    /// RFC 6381, or a name.
    std::string codec = {};
    /// Of an interactive file.
    std::string api_framework = {};
    /// Pixels.
    /// @{
    std::optional<int> width = {};
    std::optional<int> height = {};
    /// @}
    /// Kilobits a second.
    std::optional<int> bitrate = {};
    /// The upper end of a range, kilobits a second.
    std::optional<int> max_bitrate = {};
    /// XPath of the element.
    std::string path = {};
};

/// What a companion or an icon shows.
struct Resource {
    /// What a resource is.
    enum class Kind {
        /// The address of a picture.
        Static,
        /// A piece of HTML.
        Html,
        /// The address of a page.
        Frame,
    };
    /// What the text is.
    Kind kind = Kind::Static;
    /// The address, or the HTML.
    std::string text = {};
    /// MIME type of a static resource; empty when absent.
    std::string type = {};
};

/// A picture or page beside the video (VAST 4.3, section 3.16).
struct Companion {
    /// Empty when absent.
    std::string id = {};
    /// Pixels.
    /// @{
    std::optional<double> width = {};
    std::optional<double> height = {};
    /// @}
    /// Of the CompanionAds around it: "all", "any", "none", or absent.
    std::optional<std::string> required = {};
    /// What it shows: one of them.
    std::vector<Resource> resources = {};
    /// For viewers who do not see it; empty when absent.
    std::string alternative_text = {};
    /// Empty without one.
    std::string click_through = {};
    /// Requested when the viewer follows it.
    std::vector<std::string> click_tracking = {};
    /// Requested when it is shown.
    std::vector<std::string> creative_view = {};
    /// XPath of the element.
    std::string path = {};
};

/// A picture over the video that explains the ad, such as AdChoices (VAST 4.3, section 3.15).
struct Icon {
    /// Name of the industry program; empty when absent.
    std::string program = {};
    /// Pixels.
    /// @{
    std::optional<double> width = {};
    std::optional<double> height = {};
    /// @}
    /// Position: pixels, or "left", "right", "top", "bottom".
    /// @{
    std::string x = {};
    std::string y = {};
    /// @}
    /// Seconds from the start; absent: from the start.
    std::optional<double> offset = {};
    /// Seconds; absent: to the end.
    std::optional<double> duration = {};
    /// What it shows: one of them.
    std::vector<Resource> resources = {};
    /// Empty without one.
    std::string click_through = {};
    /// Requested when the viewer follows it.
    std::vector<std::string> click_tracking = {};
    /// Requested when it is shown.
    std::vector<std::string> view_tracking = {};
};

/// Code that would measure the ad (VAST 4.3, section 3.17). Never executed here.
struct Verification {
    /// Empty when absent.
    std::string vendor = {};
    /// Requested with [REASON], because it is not executed.
    std::vector<std::string> not_executed = {};
};

/// Requested when the ad has been seen, or not (VAST 4.3, section 3.10).
struct Viewable {
    /// It has been seen.
    std::vector<std::string> viewable = {};
    /// It has not been seen.
    std::vector<std::string> not_viewable = {};
    /// It is not known.
    std::vector<std::string> undetermined = {};
};

/// Identifies the creative.
struct UniversalAdId {
    /// Its registry; empty when absent.
    std::string registry = {};
    /// The identifier.
    std::string value = {};
};

/// What an ad is about, in the list of an authority (VAST 4.3, section 3.4.5).
struct Category {
    /// Empty when absent.
    std::string authority = {};
    /// The category's code in that list.
    std::string code = {};
    /// Whether all members are equal.
    friend bool operator==(const Category&, const Category&) = default;
};

/// The video (VAST 4.3, section 3.8). Of a wrapper, it has trackers, click addresses and icons only.
struct Linear {
    /// Seconds; absent when it is missing or malformed.
    std::optional<double> duration = {};
    /// When the viewer may skip; absent: never.
    std::optional<Offset> skip_offset = {};
    /// The video, in several encodings.
    std::vector<MediaFile> media_files = {};
    /// In document order.
    std::vector<Tracker> trackers = {};
    /// Empty without one.
    std::string click_through = {};
    /// Requested when the viewer follows click_through.
    std::vector<std::string> click_tracking = {};
    /// Requested for taps that lead nowhere.
    std::vector<std::string> custom_click = {};
    /// In document order.
    std::vector<Icon> icons = {};
};

/// Where a wrapper leads (VAST 4.3, section 3.19).
struct Onward {
    /// Of the next document.
    std::string address = {};
    /// Whether that may be a wrapper.
    bool follow_additional_wrappers = true;
    /// Whether more than one ad of it may play.
    bool allow_multiple_ads = false;
    /// Absent when the document does not say.
    std::optional<bool> fallback_on_no_ad = {};
};

/// An ad, or a wrapper of ads.
struct Ad {
    /// Empty when absent.
    std::string id = {};
    /// Position in the pod; absent for a stand-alone ad.
    std::optional<int> sequence = {};
    /// "video", "audio" or "hybrid"; "video" when absent.
    std::string type = "video";
    /// Of a wrapper.
    std::optional<Onward> onward = {};
    /// The standard's code for what makes the ad unusable; absent for a usable one.
    std::optional<int> error = {};
    /// With an error: what is missing, for people.
    std::string fault = {};

    /// Empty when absent.
    /// @{
    std::string system = {};
    std::string title = {};
    std::string advertiser = {};
    std::string serving_id = {};
    /// @}
    /// What the ad is about.
    std::vector<Category> categories = {};
    /// What a wrapper refuses.
    std::vector<Category> blocked_categories = {};
    /// Of all its creatives.
    std::vector<UniversalAdId> universal_ad_ids = {};
    /// Requested when the ad is on the screen.
    std::vector<std::string> impressions = {};
    /// Requested with [ERRORCODE] when the ad fails.
    std::vector<std::string> errors = {};
    /// Requested when the ad has been seen, or not.
    Viewable viewable = {};
    /// Absent without a linear creative.
    std::optional<Linear> linear = {};
    /// Of all its creatives.
    std::vector<Companion> companions = {};
    /// Code that would measure the ad.
    std::vector<Verification> verifications = {};
    /// What of the ad has no effect.
    std::vector<Ignored> ignored = {};
    /// XPath of the element.
    std::string path = {};
};

/// A whole document.
struct Document {
    /// As the document gives it, such as "4.2".
    std::string version = {};
    /// In document order.
    std::vector<Ad> ads = {};
    /// Requested when the document has no ad (VAST 4.3, section 3.2.1).
    std::vector<std::string> errors = {};
    /// Outside its ads.
    std::vector<Ignored> ignored = {};
};

} // namespace vast

} // namespace qoro
