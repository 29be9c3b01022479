#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qoro::test
{

/// Address of the tags of these tests.
inline constexpr const char* TagAddress = "http://ads/tag";

/// A VAST ad of our own. Its video is at http://m/v.mp4 and lasts ten seconds.
struct TagAd {
    /// Attributes of Ad, such as "sequence=\"1\"".
    std::string attributes = {};
    /// Elements of InLine before its Creatives, besides the first impression.
    std::string in_line = {};
    /// Attributes of Linear.
    std::string linear = {};
    /// Events with a tracker each, at http://t/ and the event's name.
    std::vector<std::string> events = {};
    /// Tracking elements besides these.
    std::string tracking = {};
    /// Elements of Linear.
    std::string in_linear = {};
    /// Media files.
    std::string media =
        R"(<MediaFile delivery="progressive" type="video/mp4" width="1280" height="720">http://m/v.mp4</MediaFile>)";
    /// Creative elements besides the linear one.
    std::string creatives = {};
    /// Prefix of the paths of all trackers, such as "2/".
    std::string prefix = {};
    /// Address of the first impression; empty: http://t/, the prefix, and "impression".
    std::string impression = {};
};

/// All events of a linear ad that a player without other ads can send, without progress.
std::vector<std::string> all_events();
/// An Ad element.
std::string ad_element(const TagAd& ad);
/// An Ad element with a wrapper.
/// @param content elements of Wrapper after VASTAdTagURI
std::string wrapper_element(const std::string& leads_to, const std::string& content,
                            const std::string& attributes = "");
/// A document with these Ad elements.
std::string vast_document(const std::string& ads);

/// A scenario of a tag.
struct TagScenario {
    /// Documents by address.
    std::map<std::string, std::string> documents = {};
    /// Steps as JSON, after "open": 0.
    std::string steps = {};
    /// Seconds of the scenario.
    double until = 30;
    /// Keys of the scenario, merged.
    nlohmann::json further = nlohmann::json::object();
};

/// The scenario as JSON.
nlohmann::json scenario_of(const TagScenario& scenario);
/// The trace of a scenario.
std::vector<nlohmann::json> trace_of(const TagScenario& scenario);
/// The trace of a tag with one ad, whose video lasts ten seconds.
std::vector<nlohmann::json> trace_of(const TagAd& ad, const std::string& steps = "",
                                     const nlohmann::json& further = nlohmann::json::object(), double until = 30);

/// The trackers of a trace in order, each with its time: "start 0.3".
std::vector<std::string> timed_trackers(const std::vector<nlohmann::json>& trace);
/// The events of the trackers of a trace, in order.
std::vector<std::string> trackers(const std::vector<nlohmann::json>& trace);
/// The addresses of the trackers of one event, in order.
std::vector<std::string> addresses_of(const std::vector<nlohmann::json>& trace, const std::string& event);
/// The lines of a kind, and with "do", in order.
std::vector<nlohmann::json> lines_of(const std::vector<nlohmann::json>& trace, const std::string& what,
                                     const std::string& action = "");

} // namespace qoro::test
