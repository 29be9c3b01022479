#include "vast/Reader.h"

#include "vast/CreativeReader.h"
#include "vast/ElementReader.h"
#include "vast/Texts.h"
#include "vast/XmlText.h"

#include <algorithm>
#include <utility>

namespace qoro::vast
{

namespace
{

class Reader : private ElementReader
{
public:
    Reader(const Paths& paths, std::vector<Ignored>& notes) : ElementReader(paths, notes), creatives_(paths, notes) {}

    void read(const Node& root, Document& document) const;

private:
    Ad read_ad(const Node& node) const;
    void read_content(const Node& node, Ad& ad) const;
    void read_onward(const Node& node, Ad& ad) const;
    void read_verifications(const Node& node, Ad& ad) const;
    void read_extensions(const Node& node, Ad& ad) const;
    void read_viewable(const Node& node, Viewable& viewable) const;
    void read_category(const Node& node, std::vector<Category>& categories) const;
    void read_blocked_categories(const Node& node, std::vector<Category>& categories) const;

    CreativeReader creatives_;
};

/// More than any list of categories has.
constexpr std::size_t MostBlockedCategories = 10000;
constexpr std::string_view NoEffect = "has no effect here";

// ------------------------------------------------------------------------------------------------------------ the ads

void Reader::read(const Node& root, Document& document) const
{
    // Each ad has its own notes.
    visit(root, {{"Ad",
                  [&](const Node& node) {
                      std::vector<Ignored> notes;
                      Ad ad = Reader(paths(), notes).read_ad(node);
                      ad.ignored = std::move(notes);
                      document.ads.push_back(std::move(ad));
                  }},
                 addresses("Error", document.errors)});
}

Ad Reader::read_ad(const Node& node) const
{
    Ad ad{.id = attribute(node, "id"),
          .sequence = value(node, "sequence", position_in, "is no position in a pod (1, 2, …)"),
          .path = path_of(node)};
    if (const std::string type = attribute(node, "adType"); !type.empty())
        ad.type = type;
    if (ad.type != "video" && ad.type != "audio" && ad.type != "hybrid") {
        note(node, "adType", "\"" + ad.type + "\" is not video, audio or hybrid; read as video");
        ad.type = "video";
    }
    if (boolean_in(attribute(node, "conditionalAd")) == true)
        note(node, "conditionalAd", "no code decides whether the ad is served");
    bool found = false;
    const auto once = [&](void (Reader::*reads)(const Node&, Ad&) const) {
        return [this, &ad, &found, reads](const Node& content) {
            if (!std::exchange(found, true))
                (this->*reads)(content, ad);
            else
                note(content, "only the first of InLine and Wrapper counts");
        };
    };
    visit(node, {{"InLine", once(&Reader::read_content)}, {"Wrapper", once(&Reader::read_onward)}});
    if (!found) {
        ad.error = 101;
        ad.fault = "has neither InLine nor Wrapper";
        note(node, ad.fault);
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
    if (!onward.address.empty())
        return;
    const bool missing = text_of(child_of(node, "VASTAdTagURI")).empty();
    ad.error = missing ? 101 : 300;
    ad.fault = missing ? "Wrapper has no VASTAdTagURI" : "VASTAdTagURI is no address of http or https";
}

/// What InLine and Wrapper have in common, and what only one of them may have.
void Reader::read_content(const Node& node, Ad& ad) const
{
    std::string onward;
    const auto creatives = [&](const Node& list) {
        visit(list, {{"Creative", [&](const Node& creative) { creatives_.read(creative, ad); }}});
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
        note(node, "VASTAdTagURI", "only a Wrapper leads to another document");
    for (const char* required : {"AdSystem", "AdTitle", "Impression"})
        require(node, required);
    if (!has_child(child_of(node, "Creatives"), "Creative")) {
        note(node, "Creative", "is missing");
        ad.error = 101;
        ad.fault = "InLine has no Creative";
    }
}

void Reader::read_category(const Node& node, std::vector<Category>& categories) const
{
    if (std::string code = text_of(node); !code.empty())
        categories.push_back({attribute(node, "authority"), std::move(code)});
    else
        note(node, "is empty");
}

/// A list with commas.
void Reader::read_blocked_categories(const Node& node, std::vector<Category>& categories) const
{
    const std::string text = text_of(node);
    if (text.empty())
        note(node, "is empty");
    for (std::string_view rest = text; !rest.empty();) {
        if (categories.size() == MostBlockedCategories)
            return note(node, "only the first " + std::to_string(MostBlockedCategories) + " count");
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
                note(event, "only verificationNotExecuted has an effect here");
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
            return note(each, "extensions are not supported");
        visit(each, {{"AdVerifications", [&](const Node& list) { read_verifications(list, ad); }}});
    };
    visit(node, {{"Extension", read_one}});
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
