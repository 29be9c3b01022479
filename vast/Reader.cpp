#include "vast/Reader.h"

#include "vast/Texts.h"
#include "vast/XmlText.h"

#include <algorithm>
#include <array>
#include <functional>
#include <initializer_list>
#include <utility>

namespace qoro::vast
{

namespace
{

using Node = pugi::xml_node;

/// What has no effect, noted as it is found.
class Notes
{
public:
    Notes(const Paths& paths, std::vector<Ignored>& list) : paths_(paths), list_(list) {}

    void add(const Node& node, const std::string& why) const { add(node, std::string(name_of(node)), why); }
    /// About an attribute of an element.
    void add(const Node& node, const std::string& name, const std::string& why) const
    {
        list_.push_back({name, why, paths_.of(node)});
    }

private:
    const Paths& paths_;
    std::vector<Ignored>& list_;
};

/// How the children of an element of one name are read.
struct Child {
    std::string_view name;
    std::function<void(const Node&)> read;
};

/// Children that the standard defines and that have no effect here, and why.
struct Unsupported {
    std::string_view name;
    std::string_view why;
};

Node child_of(const Node& parent, std::string_view name)
{
    return parent.find_child([name](const Node& child) { return is_element(child) && name_of(child) == name; });
}

bool has_child(const Node& parent, std::string_view name)
{
    return static_cast<bool>(child_of(parent, name));
}

class Reader
{
public:
    Reader(const Paths& paths, std::vector<Ignored>& notes) : paths_(paths), notes_(paths, notes) {}

    void read(const Node& root, Document& document) const;

private:
    Ad read_ad(const Node& node) const;
    void read_content(const Node& node, Ad& ad) const;
    void read_onward(const Node& node, Ad& ad) const;
    void read_creative(const Node& node, Ad& ad) const;
    void read_linear_of_wrapper(const Node& node, Ad& ad) const;
    void read_linear(const Node& node, Linear& linear) const;
    void read_media_files(const Node& node, Linear& linear) const;
    MediaFile read_media_file(const Node& node) const;
    void read_trackers(const Node& node, std::vector<Tracker>& trackers) const;
    Icon read_icon(const Node& node) const;
    Companion read_companion(const Node& node, const std::optional<std::string>& required) const;
    void read_verifications(const Node& node, Ad& ad) const;
    void read_extensions(const Node& node, Ad& ad) const;
    void read_viewable(const Node& node, Viewable& viewable) const;
    void read_category(const Node& node, std::vector<Category>& categories) const;
    void read_blocked_categories(const Node& node, std::vector<Category>& categories) const;
    /// Notes a child that is missing.
    void require(const Node& parent, const char* name) const;

    /// Reads each child by its name. Others are noted.
    void visit(const Node& parent, std::initializer_list<Child> children,
               std::initializer_list<Unsupported> unsupported = {}) const;
    Child address(std::string_view name, std::string& place) const;
    Child addresses(std::string_view name, std::vector<std::string>& place) const;
    Child text(std::string_view name, std::string& place) const;
    Child resource(std::string_view name, Resource::Kind kind, std::vector<Resource>& place) const;
    /// The address in an element; empty when there is none, which is noted.
    std::string address_in(const Node& node) const;
    /// An attribute, read by one of the functions of Texts.h; absent when missing, and, with a note, when malformed.
    template <typename Result>
    std::optional<Result> value(const Node& node, const char* name, std::optional<Result> (*parse)(std::string_view),
                                std::string_view expected) const;

    const Paths& paths_;
    Notes notes_;
};

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
/// More than any list of categories has.
constexpr std::size_t MostBlockedCategories = 10000;
constexpr std::string_view Pixels = "is no number of pixels";
constexpr std::string_view NoEffect = "has no effect here";

void Reader::visit(const Node& parent, std::initializer_list<Child> children,
                   std::initializer_list<Unsupported> unsupported) const
{
    for (const Node& node : parent.children()) {
        if (!is_element(node))
            continue;
        const std::string_view name = name_of(node);
        if (const auto* const child = std::ranges::find(children, name, &Child::name); child != children.end())
            child->read(node);
        else if (const auto* const known = std::ranges::find(unsupported, name, &Unsupported::name);
                 known != unsupported.end())
            notes_.add(node, std::string(known->why));
        else
            notes_.add(node, "unknown element");
    }
}

std::string Reader::address_in(const Node& node) const
{
    std::string address = text_of(node);
    if (address.empty())
        notes_.add(node, "is empty");
    else if (!is_address(address)) {
        notes_.add(node, "is no http or https address");
        address.clear();
    } else if (has_blanks(address))
        notes_.add(node, "has blanks, which are requested percent-encoded");
    return address;
}

Child Reader::address(std::string_view name, std::string& place) const
{
    return {name, [this, &place](const Node& node) {
                const std::string address = address_in(node);
                if (address.empty())
                    return;
                if (place.empty())
                    place = address;
                else
                    notes_.add(node, "only the first counts");
            }};
}

Child Reader::addresses(std::string_view name, std::vector<std::string>& place) const
{
    return {name, [this, &place](const Node& node) {
                if (std::string address = address_in(node); !address.empty())
                    place.push_back(std::move(address));
            }};
}

Child Reader::text(std::string_view name, std::string& place) const
{
    return {name, [this, &place](const Node& node) {
                if (place.empty())
                    place = text_of(node);
                else
                    notes_.add(node, "only the first counts");
            }};
}

Child Reader::resource(std::string_view name, Resource::Kind kind, std::vector<Resource>& place) const
{
    return {name, [this, kind, &place](const Node& node) {
                Resource resource{kind, kind == Resource::Kind::Html ? text_of(node) : address_in(node),
                                  attribute(node, "creativeType")};
                if (!resource.text.empty())
                    place.push_back(std::move(resource));
                else if (kind == Resource::Kind::Html)
                    notes_.add(node, "is empty");
            }};
}

void Reader::require(const Node& parent, const char* name) const
{
    if (!has_child(parent, name))
        notes_.add(parent, name, "is missing");
}

template <typename Result>
std::optional<Result> Reader::value(const Node& node, const char* name,
                                    std::optional<Result> (*parse)(std::string_view), std::string_view expected) const
{
    if (!has_attribute(node, name))
        return std::nullopt;
    const std::string text = attribute(node, name);
    const std::optional<Result> result = parse(text);
    if (!result)
        notes_.add(node, std::string(name), "\"" + text.substr(0, 80) + "\" " + std::string(expected));
    return result;
}

// ------------------------------------------------------------------------------------------------------------ the ads

void Reader::read(const Node& root, Document& document) const
{
    // Each ad has its own notes.
    visit(root, {{"Ad",
                  [&](const Node& node) {
                      std::vector<Ignored> notes;
                      Ad ad = Reader(paths_, notes).read_ad(node);
                      ad.ignored = std::move(notes);
                      document.ads.push_back(std::move(ad));
                  }},
                 addresses("Error", document.errors)});
}

Ad Reader::read_ad(const Node& node) const
{
    Ad ad{.id = attribute(node, "id"),
          .sequence = value(node, "sequence", position_in, "is no position in a pod (1, 2, …)"),
          .path = paths_.of(node)};
    if (const std::string type = attribute(node, "adType"); !type.empty())
        ad.type = type;
    if (ad.type != "video" && ad.type != "audio" && ad.type != "hybrid") {
        notes_.add(node, "adType", "\"" + ad.type + "\" is not video, audio or hybrid; read as video");
        ad.type = "video";
    }
    if (boolean_in(attribute(node, "conditionalAd")) == true)
        notes_.add(node, "conditionalAd", "no code decides whether the ad is served");
    bool found = false;
    const auto once = [&](void (Reader::*reads)(const Node&, Ad&) const) {
        return [this, &ad, &found, reads](const Node& content) {
            if (!std::exchange(found, true))
                (this->*reads)(content, ad);
            else
                notes_.add(content, "only the first of InLine and Wrapper counts");
        };
    };
    visit(node, {{"InLine", once(&Reader::read_content)}, {"Wrapper", once(&Reader::read_onward)}});
    if (!found) {
        notes_.add(node, "has neither InLine nor Wrapper");
        ad.error = 101;
    }
    return ad;
}

void Reader::read_onward(const Node& node, Ad& ad) const
{
    ad.onward.emplace();
    Onward& onward = *ad.onward;
    constexpr std::string_view Boolean = "is neither true nor false";
    onward.follow_additional_wrappers =
        value(node, "followAdditionalWrappers", boolean_in, Boolean).value_or(onward.follow_additional_wrappers);
    onward.allow_multiple_ads =
        value(node, "allowMultipleAds", boolean_in, Boolean).value_or(onward.allow_multiple_ads);
    onward.fallback_on_no_ad = value(node, "fallbackOnNoAd", boolean_in, Boolean);
    read_content(node, ad);
    require(node, "VASTAdTagURI");
    if (onward.address.empty())
        ad.error = text_of(child_of(node, "VASTAdTagURI")).empty() ? 101 : 300;
}

/// What InLine and Wrapper have in common, and what only one of them may have.
void Reader::read_content(const Node& node, Ad& ad) const
{
    std::string onward;
    const auto creatives = [&](const Node& list) {
        visit(list, {{"Creative", [&](const Node& creative) { read_creative(creative, ad); }}});
    };
    visit(node,
          {text("AdSystem", ad.system),
           text("AdTitle", ad.title),
           text("Advertiser", ad.advertiser),
           text("AdServingId", ad.serving_id),
           {"Category", [&](const Node& each) { read_category(each, ad.categories); }},
           {"BlockedAdCategories", [&](const Node& each) { read_blocked_categories(each, ad.blocked_categories); }},
           addresses("Impression", ad.impressions),
           addresses("Error", ad.errors),
           address("VASTAdTagURI", onward),
           {"Description", [](const Node&) {}},
           {"ViewableImpression", [&](const Node& list) { read_viewable(list, ad.viewable); }},
           {"AdVerifications", [&](const Node& list) { read_verifications(list, ad); }},
           {"Extensions", [&](const Node& list) { read_extensions(list, ad); }},
           {"Creatives", creatives}},
          {{"Survey", "surveys are not supported"}, {"Pricing", NoEffect}, {"Expires", NoEffect}});
    if (ad.onward) {
        ad.onward->address = std::move(onward);
        return;
    }
    if (!onward.empty())
        notes_.add(node, "VASTAdTagURI", "only a Wrapper leads to another document");
    for (const char* required : {"AdSystem", "AdTitle", "Impression"})
        require(node, required);
    if (!has_child(child_of(node, "Creatives"), "Creative")) {
        notes_.add(node, "Creative", "is missing");
        ad.error = 101;
    }
}

void Reader::read_category(const Node& node, std::vector<Category>& categories) const
{
    if (std::string code = text_of(node); !code.empty())
        categories.push_back({attribute(node, "authority"), std::move(code)});
    else
        notes_.add(node, "is empty");
}

/// A list with commas.
void Reader::read_blocked_categories(const Node& node, std::vector<Category>& categories) const
{
    const std::string text = text_of(node);
    if (text.empty())
        notes_.add(node, "is empty");
    for (std::string_view rest = text; !rest.empty();) {
        if (categories.size() == MostBlockedCategories)
            return notes_.add(node, "only the first " + std::to_string(MostBlockedCategories) + " count");
        const std::size_t comma = std::min(rest.find(','), rest.size());
        if (const std::string_view code = trimmed(rest.substr(0, comma)); !code.empty())
            categories.push_back({attribute(node, "authority"), std::string(code)});
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
}

void Reader::read_viewable(const Node& node, Viewable& viewable) const
{
    visit(node, {addresses("Viewable", viewable.viewable), addresses("NotViewable", viewable.not_viewable),
                 addresses("ViewUndetermined", viewable.undetermined)});
}

void Reader::read_verifications(const Node& node, Ad& ad) const
{
    const auto read_one = [&](const Node& each) {
        Verification verification{.vendor = attribute(each, "vendor")};
        const auto tracking = [&](const Node& event) {
            if (attribute(event, "event") != "verificationNotExecuted")
                notes_.add(event, "only verificationNotExecuted has an effect here");
            else if (std::string address = address_in(event); !address.empty())
                verification.not_executed.push_back(std::move(address));
        };
        constexpr std::string_view Code = "verification code is not executed";
        visit(each,
              {{"TrackingEvents",
                [&](const Node& list) {
                    visit(list, {{"Tracking", tracking}});
                }}},
              {{"JavaScriptResource", Code},
               {"ExecutableResource", Code},
               {"FlashResource", Code},
               {"ViewableImpression", NoEffect},
               {"VerificationParameters", Code}});
        ad.verifications.push_back(std::move(verification));
    };
    visit(node, {{"Verification", read_one}});
}

/// Before VAST 4.1, verifications are in an extension.
void Reader::read_extensions(const Node& node, Ad& ad) const
{
    const auto read_one = [&](const Node& each) {
        if (attribute(each, "type") != "AdVerifications")
            return notes_.add(each, "extensions are not supported");
        visit(each, {{"AdVerifications", [&](const Node& list) { read_verifications(list, ad); }}});
    };
    visit(node, {{"Extension", read_one}});
}

// ------------------------------------------------------------------------------------------------------- the creatives

void Reader::read_creative(const Node& node, Ad& ad) const
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
            return notes_.add(each, "only one linear creative counts");
        if (ad.linear)
            notes_.add(each, "replaces a linear creative without a file");
        ad.linear.emplace();
        read_linear(each, *ad.linear);
        require(each, "Duration");
        if (!has_file(each))
            notes_.add(each, "MediaFile", "is missing");
    };
    const auto companions = [&](const Node& list) {
        std::optional<std::string> required;
        if (has_attribute(list, "required")) {
            required = attribute(list, "required");
            if (*required != "all" && *required != "any" && *required != "none") {
                notes_.add(list, "required", "\"" + *required + "\" is not all, any or none");
                required.reset();
            }
        }
        visit(list,
              {{"Companion", [&](const Node& each) { ad.companions.push_back(read_companion(each, required)); }}});
    };
    if (has_attribute(node, "apiFramework"))
        notes_.add(node, "apiFramework", "interactive creatives are not supported");
    visit(node, {{"UniversalAdId", universal}, {"Linear", linear}, {"CompanionAds", companions}},
          {{"NonLinearAds", "ads over other content are not supported"},
           {"CreativeExtensions", "extensions are not supported"}});
}

/// Several linear creatives of a wrapper add up: each has trackers for the one video.
void Reader::read_linear_of_wrapper(const Node& node, Ad& ad) const
{
    if (!ad.linear)
        ad.linear.emplace();
    Linear linear;
    read_linear(node, linear);
    const auto refuse = [&](bool given, const char* name) {
        if (given)
            notes_.add(node, name, "has no effect in a wrapper");
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

void Reader::read_linear(const Node& node, Linear& linear) const
{
    linear.skip_offset = value(node, "skipoffset", offset_in, "is no time HH:MM:SS.mmm and no percentage");
    const auto duration = [&](const Node& each) {
        if (each != child_of(node, "Duration"))
            return notes_.add(each, "only the first counts");
        linear.duration = time_in(text_of(each));
        if (!linear.duration)
            notes_.add(each, "\"" + text_of(each).substr(0, 80) + "\" is no time HH:MM:SS.mmm");
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

void Reader::read_media_files(const Node& node, Linear& linear) const
{
    visit(node, {{"MediaFile", [&](const Node& each) { linear.media_files.push_back(read_media_file(each)); }}},
          {{"Mezzanine", "a mezzanine file is for servers, not for players"},
           {"InteractiveCreativeFile", "interactive files are not executed"},
           {"ClosedCaptionFiles", "closed captions are not drawn"}});
}

MediaFile Reader::read_media_file(const Node& node) const
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
            .path = paths_.of(node)};
}

void Reader::read_trackers(const Node& node, std::vector<Tracker>& trackers) const
{
    const auto tracking = [&](const Node& each) {
        Tracker tracker{.event = attribute(each, "event"), .address = address_in(each)};
        if (tracker.event.empty())
            return notes_.add(each, "event", "is missing");
        if (tracker.event == "progress") {
            tracker.offset = value(each, "offset", offset_in, "is no time HH:MM:SS.mmm and no percentage");
            if (!tracker.offset && !has_attribute(each, "offset"))
                notes_.add(each, "offset", "is missing");
            if (!tracker.offset)
                tracker.address.clear();
        } else if (std::ranges::find(Events, tracker.event) == Events.end())
            notes_.add(each, "event", "\"" + tracker.event.substr(0, 80) + "\" is no event of the standard");
        trackers.push_back(std::move(tracker));
    };
    visit(node, {{"Tracking", tracking}});
}

Icon Reader::read_icon(const Node& node) const
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
        notes_.add(node, "has no resource");
    return icon;
}

Companion Reader::read_companion(const Node& node, const std::optional<std::string>& required) const
{
    Companion companion{.id = attribute(node, "id"),
                        .width = value(node, "width", number_in, Pixels),
                        .height = value(node, "height", number_in, Pixels),
                        .required = required,
                        .path = paths_.of(node)};
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
            notes_.add(node, tracker.event, "a companion has the event creativeView only");
        else if (!tracker.address.empty())
            companion.creative_view.push_back(std::move(tracker.address));
    if (companion.resources.empty())
        notes_.add(node, "has no resource");
    return companion;
}

// ------------------------------------------------------------------------------------------------------- the document

std::string require_version(const Node& root, const Paths& paths, const Notes& notes)
{
    const std::string_view name = name_of(root);
    if (name == "VideoAdServingTemplate")
        throw DocumentError(102, paths.of(root) + ": VAST 1 is not supported; expected VAST 2.0 to 4.3");
    if (name == "DAAST")
        throw DocumentError(102, paths.of(root) + ": DAAST is not supported; expected VAST 2.0 to 4.3");
    if (equal_names(name, "VMAP"))
        throw DocumentError(101, paths.of(root) + ": VMAP is not supported; expected VAST 2.0 to 4.3");
    if (name != "VAST")
        throw DocumentError(101, paths.of(root) + ": expected the element VAST");
    std::string version = attribute(root, "version");
    if (version.empty()) {
        notes.add(root, "version", "is missing");
        return version;
    }
    const std::string major = version.substr(0, version.find('.'));
    if (major != "2" && major != "3" && major != "4")
        throw DocumentError(102,
                            paths.of(root) + "/@version: expected 2.0 to 4.3, got \"" + version.substr(0, 20) + "\"");
    return version;
}

} // namespace

Document read_document(std::string_view bytes, const DocumentLimits& limits)
{
    pugi::xml_document xml;
    const int elements = parse_xml(xml, bytes, limits);
    const Paths paths(xml, elements);
    const Node root = xml.document_element();
    Document document;
    document.version = require_version(root, paths, Notes(paths, document.ignored));
    std::vector<Ignored> notes;
    Reader(paths, notes).read(root, document);
    document.ignored.insert(document.ignored.end(), notes.begin(), notes.end());
    return document;
}

} // namespace qoro::vast
