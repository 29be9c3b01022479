#include "vast/Reader.h"

#include "vast/Texts.h"

#include <pugixml.hpp>

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

/// Without the prefix of a namespace.
std::string_view local_name(std::string_view name)
{
    return name.substr(name.find(':') + 1);
}

std::string_view name_of(const Node& node)
{
    return local_name(node.name());
}

bool is_element(const Node& node)
{
    return node.type() == pugi::node_element;
}

/// XPath of an element; an element among others of its name has its position, from 1.
std::string path_of(const Node& node)
{
    std::string path;
    for (Node each = node; is_element(each); each = each.parent()) {
        int before = 0;
        int all = 0;
        for (Node sibling : each.parent().children(each.name())) {
            ++all;
            if (sibling == each)
                before = all;
        }
        const std::string position = all > 1 ? "[" + std::to_string(before) + "]" : "";
        path.insert(0, "/" + std::string(name_of(each)) + position);
    }
    return path;
}

std::string text_of(const Node& node)
{
    std::string text;
    for (const Node& child : node.children())
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            text += child.value();
    return std::string(trimmed(text));
}

/// An attribute's value; empty when it is absent.
std::string attribute(const Node& node, std::string_view name)
{
    for (const pugi::xml_attribute& each : node.attributes())
        if (local_name(each.name()) == name)
            return std::string(trimmed(each.value()));
    return {};
}

bool has_attribute(const Node& node, std::string_view name)
{
    return std::ranges::any_of(node.attributes(), [name](const auto& each) { return local_name(each.name()) == name; });
}

/// What has no effect, noted as it is found.
class Notes
{
public:
    explicit Notes(std::vector<Ignored>& list) : list_(list) {}

    void add(const Node& node, const std::string& why) const { add(node, std::string(name_of(node)), why); }
    /// About an attribute of an element.
    void add(const Node& node, const std::string& name, const std::string& why) const
    {
        list_.push_back({name, why, path_of(node)});
    }

private:
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

class Reader
{
public:
    explicit Reader(std::vector<Ignored>& notes) : notes_(notes) {}

    void read(const Node& root, Document& document) const;

private:
    Ad read_ad(const Node& node) const;
    void read_content(const Node& node, Ad& ad) const;
    void read_onward(const Node& node, Ad& ad) const;
    void read_creative(const Node& node, Ad& ad) const;
    void read_linear(const Node& node, Linear& linear) const;
    void read_media_files(const Node& node, Linear& linear) const;
    MediaFile read_media_file(const Node& node) const;
    void read_trackers(const Node& node, std::vector<Tracker>& trackers) const;
    Icon read_icon(const Node& node) const;
    Companion read_companion(const Node& node, const std::optional<std::string>& required) const;
    void read_verifications(const Node& node, Ad& ad) const;
    void read_extensions(const Node& node, Ad& ad) const;
    void read_viewable(const Node& node, Viewable& viewable) const;

    /// Reads each child by its name. Others are noted.
    void visit(const Node& parent, std::initializer_list<Child> children,
               std::initializer_list<Unsupported> unsupported = {}) const;
    Child address(std::string_view name, std::string& place) const;
    Child addresses(std::string_view name, std::vector<std::string>& place) const;
    Child text(std::string_view name, std::string& place) const;
    Child texts(std::string_view name, std::vector<std::string>& place) const;
    Child resource(std::string_view name, Resource::Kind kind, std::vector<Resource>& place) const;
    /// The address in an element; empty when there is none, which is noted.
    std::string address_in(const Node& node) const;
    /// An attribute, read by one of the functions of Texts.h; absent when missing, and, with a note, when malformed.
    template <typename Result>
    std::optional<Result> value(const Node& node, std::string_view name,
                                std::optional<Result> (*parse)(std::string_view), std::string_view expected) const;

    Notes notes_;
};

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
    }
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

Child Reader::texts(std::string_view name, std::vector<std::string>& place) const
{
    return {name, [&place](const Node& node) {
                if (std::string text = text_of(node); !text.empty())
                    place.push_back(std::move(text));
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

template <typename Result>
std::optional<Result> Reader::value(const Node& node, std::string_view name,
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
                      Ad ad = Reader(notes).read_ad(node);
                      ad.ignored = std::move(notes);
                      document.ads.push_back(std::move(ad));
                  }},
                 addresses("Error", document.errors)});
}

Ad Reader::read_ad(const Node& node) const
{
    Ad ad{.id = attribute(node, "id"),
          .sequence = value(node, "sequence", whole_number_in, "is no position in a pod"),
          .path = path_of(node)};
    if (const std::string type = attribute(node, "adType"); !type.empty())
        ad.type = type;
    if (ad.type != "video" && ad.type != "audio" && ad.type != "hybrid") {
        notes_.add(node, "adType", "\"" + ad.type + "\" is not video, audio or hybrid; read as video");
        ad.type = "video";
    }
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
    if (onward.address.empty()) {
        notes_.add(node, "has no VASTAdTagURI");
        ad.error = 101;
    }
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
           texts("Category", ad.categories),
           texts("BlockedAdCategories", ad.blocked_categories),
           addresses("Impression", ad.impressions),
           addresses("Error", ad.errors),
           address("VASTAdTagURI", onward),
           {"Description", [](const Node&) {}},
           {"ViewableImpression", [&](const Node& list) { read_viewable(list, ad.viewable); }},
           {"AdVerifications", [&](const Node& list) { read_verifications(list, ad); }},
           {"Extensions", [&](const Node& list) { read_extensions(list, ad); }},
           {"Creatives", creatives}},
          {{"Survey", "surveys are not supported"}, {"Pricing", NoEffect}, {"Expires", NoEffect}});
    if (ad.onward)
        ad.onward->address = std::move(onward);
    else if (ad.impressions.empty())
        notes_.add(node, "Impression", "is missing");
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
        if (ad.linear)
            return notes_.add(each, "only the first linear creative counts");
        ad.linear.emplace();
        read_linear(each, *ad.linear);
        if (ad.onward)
            return;
        if (!ad.linear->duration && !each.find_child([](const Node& c) { return name_of(c) == "Duration"; }))
            notes_.add(each, "Duration", "is missing");
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

void Reader::read_linear(const Node& node, Linear& linear) const
{
    linear.skip_offset = value(node, "skipoffset", offset_in, "is no time HH:MM:SS.mmm and no percentage");
    const auto duration = [&](const Node& each) {
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
    MediaFile file{.address = text_of(node),
                   .type = attribute(node, "type"),
                   .delivery = attribute(node, "delivery"),
                   .codec = attribute(node, "codec"),
                   .api_framework = attribute(node, "apiFramework"),
                   .width = value(node, "width", whole_number_in, Pixels),
                   .height = value(node, "height", whole_number_in, Pixels),
                   .bitrate = value(node, "bitrate", whole_number_in, "is no number of kilobits a second"),
                   .path = path_of(node)};
    if (!file.bitrate)
        file.bitrate = value(node, "maxBitrate", whole_number_in, "is no number of kilobits a second");
    return file;
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
                return;
        }
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
            notes_.add(node, tracker.event, "a companion has the event creativeView only");
        else if (!tracker.address.empty())
            companion.creative_view.push_back(std::move(tracker.address));
    if (companion.resources.empty())
        notes_.add(node, "has no resource");
    return companion;
}

// --------------------------------------------------------------------------------------------------------- the text

/// Line and column of an offset into UTF-8, or else the number of the character.
std::string place_of(std::string_view bytes, std::ptrdiff_t offset)
{
    const auto position = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
    if (bytes.substr(0, 4).find('\0') != std::string_view::npos || bytes.starts_with("\xff\xfe") ||
        bytes.starts_with("\xfe\xff"))
        return "character " + std::to_string(position + 1);
    const std::string_view before = bytes.substr(0, position);
    const auto line = std::ranges::count(before, '\n') + 1;
    const std::size_t column = before.size() - (before.rfind('\n') + 1) + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

void require_within(const pugi::xml_document& xml, std::string_view bytes, const DocumentLimits& limits)
{
    int elements = 0;
    int depth = 0;
    Node node = xml;
    const auto refuse = [&](const std::string& what) {
        throw DocumentError(100, place_of(bytes, node.offset_debug()) + ": " + what);
    };
    // In document order, without recursion.
    for (;;) {
        if (node.first_child()) {
            node = node.first_child();
            ++depth;
        } else {
            while (node != xml && !node.next_sibling()) {
                node = node.parent();
                --depth;
            }
            if (node == xml)
                return;
            node = node.next_sibling();
        }
        if (!is_element(node))
            continue;
        if (++elements > limits.elements)
            refuse("the document has more than " + std::to_string(limits.elements) + " elements");
        if (depth > limits.depth)
            refuse("the document has more than " + std::to_string(limits.depth) + " levels of elements");
    }
}

std::string require_version(const Node& root, Notes notes)
{
    const std::string_view name = name_of(root);
    if (name == "VideoAdServingTemplate")
        throw DocumentError(102, path_of(root) + ": VAST 1 is not supported; expected VAST 2.0 to 4.3");
    if (name == "DAAST")
        throw DocumentError(102, path_of(root) + ": DAAST is not supported; expected VAST 2.0 to 4.3");
    if (equal_names(name, "VMAP"))
        throw DocumentError(101, path_of(root) + ": VMAP is not supported; expected VAST 2.0 to 4.3");
    if (name != "VAST")
        throw DocumentError(101, path_of(root) + ": expected the element VAST");
    std::string version = attribute(root, "version");
    if (version.empty()) {
        notes.add(root, "version", "is missing");
        return version;
    }
    const std::string major = version.substr(0, version.find('.'));
    if (major != "2" && major != "3" && major != "4")
        throw DocumentError(102,
                            path_of(root) + "/@version: expected 2.0 to 4.3, got \"" + version.substr(0, 20) + "\"");
    return version;
}

} // namespace

Document read_document(std::string_view bytes, const DocumentLimits& limits)
{
    if (bytes.size() > limits.bytes)
        throw DocumentError(100, "byte " + std::to_string(limits.bytes + 1) + ": the document is larger than " +
                                     std::to_string(limits.bytes) + " bytes");
    pugi::xml_document xml;
    const pugi::xml_parse_result parsed = xml.load_buffer(bytes.data(), bytes.size());
    if (!parsed)
        throw DocumentError(100, place_of(bytes, parsed.offset) + ": not XML: " + parsed.description());
    require_within(xml, bytes, limits);
    const Node root = xml.document_element();
    if (!root)
        throw DocumentError(100, "line 1, column 1: expected the element VAST, got no element");
    Document document;
    document.version = require_version(root, Notes(document.ignored));
    std::vector<Ignored> notes;
    Reader(notes).read(root, document);
    document.ignored.insert(document.ignored.end(), notes.begin(), notes.end());
    return document;
}

} // namespace qoro::vast
