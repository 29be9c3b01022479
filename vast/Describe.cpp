#include "vast/Describe.h"

#include <nlohmann/json.hpp>

namespace qoro::vast
{

namespace
{

using Json = nlohmann::ordered_json;

/// Null for an empty text.
Json text(const std::string& value)
{
    return value.empty() ? Json() : Json(value);
}

template <typename Number>
Json number(const std::optional<Number>& value)
{
    return value ? Json(*value) : Json();
}

Json list(const std::vector<std::string>& values)
{
    return Json(values);
}

template <typename Item, typename Describe>
Json list(const std::vector<Item>& items, Describe&& describe)
{
    Json array = Json::array();
    for (const Item& item : items)
        array.push_back(describe(item));
    return array;
}

std::string_view kind_of(const Resource& resource)
{
    switch (resource.kind) {
    case Resource::Kind::Static:
        return "static";
    case Resource::Kind::Html:
        return "html";
    case Resource::Kind::Frame:
        break;
    }
    return "iframe";
}

/// Of several resources, the first.
void describe_resource(Json& object, const std::vector<Resource>& resources)
{
    object["kind"] = resources.empty() ? Json() : Json(kind_of(resources.front()));
    object["resource"] = resources.empty() ? Json() : Json(resources.front().text);
}

Json describe_media_files(const std::vector<MediaFile>& files, const std::vector<std::string>& reasons)
{
    Json array = Json::array();
    for (std::size_t n = 0; n < files.size(); ++n) {
        const MediaFile& file = files[n];
        const std::string& reason = reasons[n];
        array.push_back(Json{{"address", text(file.address)},
                             {"type", text(file.type)},
                             {"delivery", text(file.delivery)},
                             {"width", number(file.width)},
                             {"height", number(file.height)},
                             {"bitrate", number(file.bitrate)},
                             {"codec", text(file.codec)},
                             {"usable", reason.empty()},
                             {"reason", text(reason)}});
    }
    return array;
}

Json describe_trackers(const Linear& linear)
{
    Json events = Json::object();
    for (const Tracker& tracker : linear.trackers) {
        Json& addresses = events[tracker.event];
        if (addresses.is_null())
            addresses = Json::array();
        if (tracker.address.empty())
            continue;
        if (tracker.offset)
            addresses.push_back(
                {{"offset", number(tracker.offset->seconds(linear.duration))}, {"address", tracker.address}});
        else
            addresses.push_back(tracker.address);
    }
    return events;
}

Json describe_companion(const Companion& companion)
{
    Json object{{"width", number(companion.width)},
                {"height", number(companion.height)},
                {"required", companion.required ? Json(*companion.required) : Json()}};
    describe_resource(object, companion.resources);
    object["clickThrough"] = text(companion.click_through);
    object["clickTracking"] = list(companion.click_tracking);
    object["creativeView"] = list(companion.creative_view);
    return object;
}

Json describe_icon(const Icon& icon)
{
    Json object{{"program", text(icon.program)}};
    describe_resource(object, icon.resources);
    object["offset"] = number(icon.offset);
    object["duration"] = number(icon.duration);
    object["clickThrough"] = text(icon.click_through);
    object["clickTracking"] = list(icon.click_tracking);
    object["viewTracking"] = list(icon.view_tracking);
    return object;
}

Json describe_ignored(const Ignored& ignored)
{
    return {{"element", ignored.element}, {"why", ignored.why}, {"path", text(ignored.path)}};
}

Json describe_ad(const ResolvedAd& resolved, const std::vector<Ignored>& outside)
{
    const Ad& ad = resolved.ad;
    const Linear& linear = *ad.linear;
    std::vector<Ignored> ignored = outside;
    ignored.insert(ignored.end(), ad.ignored.begin(), ad.ignored.end());
    return {
        {"id", text(ad.id)},
        {"sequence", number(ad.sequence)},
        {"system", text(ad.system)},
        {"title", text(ad.title)},
        {"advertiser", text(ad.advertiser)},
        {"adType", ad.type},
        {"universalAdIds", list(ad.universal_ad_ids,
                                [](const UniversalAdId& id) {
                                    return Json{{"registry", text(id.registry)}, {"value", text(id.value)}};
                                })},
        {"duration", number(linear.duration)},
        {"skipOffset", linear.skip_offset ? number(linear.skip_offset->seconds(linear.duration)) : Json()},
        {"mediaFiles", describe_media_files(linear.media_files, resolved.media.reasons)},
        {"chosen", *resolved.media.chosen},
        {"chosenBecause", resolved.media.why},
        {"impressions", list(ad.impressions)},
        {"trackers", describe_trackers(linear)},
        {"viewable", Json{{"viewable", list(ad.viewable.viewable)},
                          {"notViewable", list(ad.viewable.not_viewable)},
                          {"viewUndetermined", list(ad.viewable.undetermined)}}},
        {"errors", list(ad.errors)},
        {"clickThrough", text(linear.click_through)},
        {"clickTracking", list(linear.click_tracking)},
        {"customClick", list(linear.custom_click)},
        {"companions", list(ad.companions, describe_companion)},
        {"icons", list(linear.icons, describe_icon)},
        {"verifications",
         list(ad.verifications,
              [](const Verification& verification) {
                  return Json{{"vendor", text(verification.vendor)}, {"notExecuted", list(verification.not_executed)}};
              })},
        {"ignored", list(ignored, describe_ignored)}};
}

Json describe_failed(const FailedAd& failed)
{
    return {{"id", text(failed.id)},
            {"error", failed.code},
            {"why", text(failed.why)},
            {"mediaFiles", describe_media_files(failed.media_files, failed.reasons)}};
}

} // namespace

std::string describe(const Resolution& resolution)
{
    const Json object{
        {"version", text(resolution.version)},
        {"wrappers",
         list(resolution.wrappers,
              [](const Hop& hop) {
                  return Json{{"address", hop.address}, {"error", number(hop.error)}, {"why", text(hop.why)}};
              })},
        {"ads", list(resolution.ads, [&](const ResolvedAd& ad) { return describe_ad(ad, resolution.ignored); })},
        {"failed", list(resolution.failed, describe_failed)},
        {"error", number(resolution.error)},
        {"why", text(resolution.why)},
        {"errors", list(resolution.errors)}};
    return object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace qoro::vast
