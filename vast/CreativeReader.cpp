#include "vast/CreativeReader.h"

#include "vast/Texts.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace qoro::vast
{

namespace
{

/// Of the tracking events of VAST 2.0 to 4.3, all that it names.
constexpr std::array<std::string_view, 32> Events{"acceptInvitation",
                                                  "acceptInvitationLinear",
                                                  "adCollapse",
                                                  "adExpand",
                                                  "close",
                                                  "closeLinear",
                                                  "collapse",
                                                  "complete",
                                                  "creativeView",
                                                  "exitFullscreen",
                                                  "expand",
                                                  "firstQuartile",
                                                  "fullscreen",
                                                  "interactiveStart",
                                                  "loaded",
                                                  "midpoint",
                                                  "minimize",
                                                  "mute",
                                                  "notUsed",
                                                  "otherAdInteraction",
                                                  "overlayViewDuration",
                                                  "pause",
                                                  "playerCollapse",
                                                  "playerExpand",
                                                  "progress",
                                                  "resume",
                                                  "rewind",
                                                  "skip",
                                                  "start",
                                                  "thirdQuartile",
                                                  "timeSpentViewing",
                                                  "unmute"};
constexpr std::string_view Pixels = "is no number of pixels";

} // namespace

void CreativeReader::read(const Node& node, Ad& ad) const
{
    const auto universal = [&](const Node& each) {
        std::string value = text_of(each);
        if (value.empty()) // VAST 4.0
            value = attribute(each, "idValue");
        ad.universal_ad_ids.push_back({attribute(each, "idRegistry"), std::move(value)});
    };
    const auto linear = [&](const Node& each) {
        if (ad.onward)
            return read_linear_of_wrapper(each, ad);
        // Of several, the first one with a file plays.
        const auto has_file = [](const Node& one) { return has_child(child_of(one, "MediaFiles"), "MediaFile"); };
        if (ad.linear && (!ad.linear->media_files.empty() || !has_file(each)))
            return note(each, "only one linear creative counts");
        if (ad.linear)
            note(each, "replaces a linear creative without a file");
        ad.linear.emplace();
        read_linear(each, *ad.linear);
        require(each, "Duration");
        if (!has_file(each))
            note(each, "MediaFile", "is missing");
    };
    const auto companions = [&](const Node& list) {
        std::optional<std::string> required;
        if (has_attribute(list, "required")) {
            required = attribute(list, "required");
            if (*required != "all" && *required != "any" && *required != "none") {
                note(list, "required", "\"" + *required + "\" is not all, any or none");
                required.reset();
            }
        }
        visit(list,
              {{"Companion", [&](const Node& each) { ad.companions.push_back(read_companion(each, required)); }}});
    };
    if (has_attribute(node, "apiFramework"))
        note(node, "apiFramework", "interactive creatives are not supported");
    visit(node, {{"UniversalAdId", universal}, {"Linear", linear}, {"CompanionAds", companions}},
          {{"NonLinearAds", "ads over other content are not supported"},
           {"CreativeExtensions", "extensions are not supported"}});
}

/// Several linear creatives of a wrapper add up: each has trackers for the one video.
void CreativeReader::read_linear_of_wrapper(const Node& node, Ad& ad) const
{
    if (!ad.linear)
        ad.linear.emplace();
    Linear linear;
    read_linear(node, linear);
    const auto refuse = [&](bool given, const char* name) {
        if (given)
            note(node, name, "has no effect in a wrapper");
    };
    refuse(linear.duration.has_value(), "Duration");
    refuse(linear.skip_offset.has_value(), "skipoffset");
    refuse(!linear.media_files.empty(), "MediaFiles");
    refuse(!linear.click_through.empty(), "ClickThrough");
    std::ranges::move(linear.trackers, std::back_inserter(ad.linear->trackers));
    std::ranges::move(linear.click_tracking, std::back_inserter(ad.linear->click_tracking));
    std::ranges::move(linear.custom_click, std::back_inserter(ad.linear->custom_click));
    std::ranges::move(linear.icons, std::back_inserter(ad.linear->icons));
}

void CreativeReader::read_linear(const Node& node, Linear& linear) const
{
    linear.skip_offset = value(node, "skipoffset", offset_in, "is no time HH:MM:SS.mmm and no percentage");
    const auto duration = [&](const Node& each) {
        if (each != child_of(node, "Duration"))
            return note(each, "only the first counts");
        linear.duration = time_in(text_of(each));
        if (!linear.duration)
            note(each, "\"" + text_of(each).substr(0, 80) + "\" is no time HH:MM:SS.mmm");
    };
    const auto clicks = [&](const Node& list) {
        visit(list, {address("ClickThrough", linear.click_through), addresses("ClickTracking", linear.click_tracking),
                     addresses("CustomClick", linear.custom_click)});
    };
    const auto icons = [&](const Node& list) {
        visit(list, {{"Icon", [&](const Node& each) { linear.icons.push_back(read_icon(each)); }}});
    };
    visit(node,
          {{"Duration", duration},
           {"MediaFiles", [&](const Node& list) { read_media_files(list, linear); }},
           {"TrackingEvents", [&](const Node& list) { read_trackers(list, linear.trackers); }},
           {"VideoClicks", clicks},
           {"Icons", icons}},
          {{"AdParameters", "interactive files are not executed"},
           {"InteractiveCreativeFile", "interactive files are not executed"}});
}

void CreativeReader::read_media_files(const Node& node, Linear& linear) const
{
    visit(node, {{"MediaFile", [&](const Node& each) { linear.media_files.push_back(read_media_file(each)); }}},
          {{"Mezzanine", "a mezzanine file is for servers, not for players"},
           {"InteractiveCreativeFile", "interactive files are not executed"},
           {"ClosedCaptionFiles", "closed captions are not drawn"}});
}

MediaFile CreativeReader::read_media_file(const Node& node) const
{
    return {.address = text_of(node),
            .type = attribute(node, "type"),
            .delivery = attribute(node, "delivery"),
            .codec = attribute(node, "codec"),
            .api_framework = attribute(node, "apiFramework"),
            .width = value(node, "width", whole_number_in, Pixels),
            .height = value(node, "height", whole_number_in, Pixels),
            .bitrate = value(node, "bitrate", whole_number_in, "is no number of kilobits a second"),
            .max_bitrate = value(node, "maxBitrate", whole_number_in, "is no number of kilobits a second"),
            .path = path_of(node)};
}

void CreativeReader::read_trackers(const Node& node, std::vector<Tracker>& trackers) const
{
    const auto tracking = [&](const Node& each) {
        Tracker tracker{.event = attribute(each, "event"), .address = address_in(each)};
        if (tracker.event.empty())
            return note(each, "event", "is missing");
        if (tracker.event == "progress") {
            tracker.offset = value(each, "offset", offset_in, "is no time HH:MM:SS.mmm and no percentage");
            if (!tracker.offset && !has_attribute(each, "offset"))
                note(each, "offset", "is missing");
            if (!tracker.offset)
                tracker.address.clear();
        } else if (std::ranges::find(Events, tracker.event) == Events.end())
            note(each, "event", "\"" + tracker.event.substr(0, 80) + "\" is no event of the standard");
        trackers.push_back(std::move(tracker));
    };
    visit(node, {{"Tracking", tracking}});
}

Icon CreativeReader::read_icon(const Node& node) const
{
    Icon icon{.program = attribute(node, "program"),
              .width = value(node, "width", number_in, Pixels),
              .height = value(node, "height", number_in, Pixels),
              .x = attribute(node, "xPosition"),
              .y = attribute(node, "yPosition"),
              .offset = value(node, "offset", time_in, "is no time HH:MM:SS.mmm"),
              .duration = value(node, "duration", time_in, "is no time HH:MM:SS.mmm")};
    const auto clicks = [&](const Node& list) {
        visit(list,
              {address("IconClickThrough", icon.click_through), addresses("IconClickTracking", icon.click_tracking)},
              {{"IconClickFallbackImages", "the icon's page is opened instead"}});
    };
    visit(node, {resource("StaticResource", Resource::Kind::Static, icon.resources),
                 resource("IFrameResource", Resource::Kind::Frame, icon.resources),
                 resource("HTMLResource", Resource::Kind::Html, icon.resources),
                 {"IconClicks", clicks},
                 addresses("IconViewTracking", icon.view_tracking)});
    if (icon.resources.empty())
        note(node, "has no resource");
    return icon;
}

Companion CreativeReader::read_companion(const Node& node, const std::optional<std::string>& required) const
{
    Companion companion{.id = attribute(node, "id"),
                        .width = value(node, "width", number_in, Pixels),
                        .height = value(node, "height", number_in, Pixels),
                        .required = required,
                        .path = path_of(node)};
    std::vector<Tracker> trackers;
    visit(node,
          {resource("StaticResource", Resource::Kind::Static, companion.resources),
           resource("IFrameResource", Resource::Kind::Frame, companion.resources),
           resource("HTMLResource", Resource::Kind::Html, companion.resources),
           text("AltText", companion.alternative_text),
           address("CompanionClickThrough", companion.click_through),
           addresses("CompanionClickTracking", companion.click_tracking),
           {"TrackingEvents", [&](const Node& list) { read_trackers(list, trackers); }}},
          {{"AdParameters", "a companion gets no parameters"}, {"CreativeExtensions", "extensions are not supported"}});
    for (Tracker& tracker : trackers)
        if (tracker.event != "creativeView")
            note(node, tracker.event, "a companion has the event creativeView only");
        else if (!tracker.address.empty())
            companion.creative_view.push_back(std::move(tracker.address));
    if (companion.resources.empty())
        note(node, "has no resource");
    return companion;
}

} // namespace qoro::vast
