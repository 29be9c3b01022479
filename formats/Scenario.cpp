#include "formats/Scenario.h"

#include "formats/Base64.h"
#include "formats/InputError.h"
#include "formats/detail/AdJson.h"
#include "formats/detail/AdProperties.h"
#include "formats/detail/StepReader.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace qoro
{

namespace
{

using detail::Reader;

// ------------------------------------------------------------------------------------------------------------- device

DeviceSetup read_device(const Reader& device)
{
    device.with_keys({"screen", "currentScreen", "orientation", "statusBarOrientation", "statusBarHidden", "phone",
                      "iOS8", "outputVolume", "volumeSlider", "canOpen", "canSendText", "calendar", "imei",
                      "displayName"});
    DeviceSetup setup;
    if (const auto screen = device.at("screen"))
        setup.facts.screen = screen->size_or_null();
    if (const auto screen = device.at("currentScreen"))
        setup.facts.current_screen = screen->size_or_null();
    if (const auto orientation = device.at("orientation"))
        setup.orientation = orientation->enumerated<UIDeviceOrientation>("a device orientation");
    if (const auto orientation = device.at("statusBarOrientation"))
        setup.status_bar_orientation = orientation->enumerated<UIInterfaceOrientation>("an interface orientation");
    if (const auto hidden = device.at("statusBarHidden"))
        setup.status_bar_hidden = hidden->flag();
    if (const auto phone = device.at("phone"))
        setup.facts.phone = phone->flag();
    if (const auto ios8 = device.at("iOS8"))
        setup.facts.ios8 = ios8->flag();
    if (const auto volume = device.at("outputVolume"))
        setup.output_volume = static_cast<float>(volume->number("a volume from 0 to 1"));
    if (const auto slider = device.at("volumeSlider"))
        setup.volume_slider = slider->flag();
    if (const auto beginnings = device.at("canOpen")) {
        setup.can_open.clear();
        for (const Reader& each : beginnings->list("a list of beginnings of addresses"))
            setup.can_open.push_back(each.text());
    }
    if (const auto can = device.at("canSendText"))
        setup.facts.can_send_text = can->is_null() ? std::nullopt : std::optional(can->flag());
    if (const auto calendar = device.at("calendar"))
        setup.calendar = calendar->flag();
    if (const auto imei = device.at("imei"))
        setup.facts.imei = imei->text_or_null();
    if (const auto name = device.at("displayName"))
        setup.facts.display_name = name->text_or_null();
    return setup;
}

// --------------------------------------------------------------------------------------------------------------- host

struct Flag {
    std::string_view name;
    bool HostSetup::*field;
};

constexpr std::array Flags{
    Flag{"bIsLockOneSide", &HostSetup::lock_one_side},
    Flag{"bIsLockOneSideAndIsLandscape", &HostSetup::lock_one_side_landscape},
    Flag{"bIsLockOneSideAndIsPortrait", &HostSetup::lock_one_side_portrait},
    Flag{"bUseAutoRotate", &HostSetup::use_auto_rotate},
};

SendImpPolicy read_policy(const Reader& reader)
{
    constexpr std::array<std::pair<std::string_view, SendImpPolicy>, 3> Policies{
        {{"CallShowFunc", CallShowFunc}, {"JsSide", JsSide}, {"PageFinished", PageFinished}}};
    if (!reader.json().is_string())
        return static_cast<SendImpPolicy>(reader.whole("one of CallShowFunc, JsSide, PageFinished, or its number"));
    const auto named = std::ranges::find(Policies, reader.text(), &decltype(Policies)::value_type::first);
    if (named == Policies.end())
        reader.refuse("one of CallShowFunc, JsSide, PageFinished, or its number");
    return named->second;
}

void read_flags(const Reader& flags, HostSetup& setup)
{
    flags.with_keys({"bIsLockOneSide", "bIsLockOneSideAndIsLandscape", "bIsLockOneSideAndIsPortrait", "bUseAutoRotate",
                     "instSendImpPolicy"});
    for (const Flag& flag : Flags)
        if (const auto value = flags.at(flag.name))
            setup.*flag.field = value->flag();
    if (const auto policy = flags.at("instSendImpPolicy"))
        setup.impression_policy = read_policy(*policy);
}

void read_delegates(const Reader& delegates, HostSetup& setup)
{
    for (const Reader& each : delegates.list("a list of delegates")) {
        const std::string expected = "\"qoroDelegate\" or \"interstitialDelegate\"";
        const std::string& name = each.text(expected);
        if (name != "qoroDelegate" && name != "interstitialDelegate")
            each.refuse(expected);
        (name == "qoroDelegate" ? setup.delegate : setup.interstitial_delegate) = true;
    }
}

std::string read_store_page(const Reader& page)
{
    if (page.is_null())
        return "";
    const std::string expected = "an address that begins with http:// or https://, with {id} in it";
    const std::string& pattern = page.text(expected);
    if (!is_store_page(pattern))
        page.refuse(expected);
    return pattern;
}

std::map<std::string, std::string, std::less<>> read_cached(const Reader& host)
{
    std::map<std::string, std::string, std::less<>> copies;
    if (const auto cached = host.at("cached"))
        for (const auto& [address, path] : cached->entries())
            copies.insert_or_assign(address, path.text());
    return copies;
}

std::vector<std::pair<std::string, std::string>> read_pairs(const Reader& origin, const char* key)
{
    std::vector<std::pair<std::string, std::string>> pairs;
    if (const auto given = origin.at(key))
        for (const auto& [name, value] : given->entries())
            pairs.emplace_back(name, value.text());
    return pairs;
}

std::vector<OriginHeaders> read_origins(const Reader& host)
{
    std::vector<OriginHeaders> origins;
    const auto given = host.at("origins");
    if (!given)
        return origins;
    for (const auto& [origin, added] : given->entries()) {
        added.with_keys({"headers", "cookies"});
        origins.push_back({origin, read_pairs(added, "headers"), read_pairs(added, "cookies")});
        if (const std::string fault = fault_of(origins.back()); !fault.empty())
            throw InputError(added.file(), added.path(), fault);
    }
    return origins;
}

std::optional<std::string> read_consent_string(const Reader& consent, const char* key,
                                               bool (*is_valid)(std::string_view), const char* expected)
{
    const auto given = consent.at(key);
    if (!given || given->is_null())
        return std::nullopt;
    if (!is_valid(given->text(expected)))
        given->refuse(expected);
    return given->text();
}

ConsentStrings read_consent(const Reader& reader)
{
    reader.with_keys({"tcf", "gdprApplies", "usPrivacy", "gpp", "gppSections"});
    ConsentStrings consent;
    consent.tcf = read_consent_string(reader, "tcf", is_tc_string, "a TC string of version 2, which begins with C");
    if (const auto applies = reader.at("gdprApplies"); applies && !applies->is_null())
        consent.gdpr_applies = applies->flag();
    consent.us_privacy = read_consent_string(reader, "usPrivacy", is_us_privacy, "a US privacy string such as 1YNN");
    consent.gpp = read_consent_string(reader, "gpp", is_gpp_string, "a GPP string, which begins with D");
    if (const auto sections = reader.at("gppSections"))
        for (const Reader& each : sections->list("a list of section numbers"))
            consent.gpp_sections.push_back(each.whole("a section number"));
    return consent;
}

/// @param setup defaults for missing keys
HostSetup read_host(const Reader& host, HostSetup setup)
{
    host.with_keys({"autorotates", "rootView", "keyWindow", "parent", "parentWindow", "delegates", "flags", "guid",
                    "session", "sequence", "script", "storePage", "guard", "trackerLimit", "cached", "origins",
                    "consent"});
    if (const auto orientations = host.at("autorotates")) {
        setup.autorotates.clear();
        for (const Reader& each : orientations->list("a list of interface orientations"))
            setup.autorotates.push_back(each.whole("an interface orientation"));
    }
    const auto root = host.at("rootView");
    setup.root_view = root ? root->size_or_null() : CGSize{375, 812};
    if (const auto key = host.at("keyWindow"))
        setup.key_window = key->flag();
    if (const auto parent = host.at("parent"))
        setup.parent = parent->flag();
    if (const auto window = host.at("parentWindow"))
        setup.parent_window = window->flag();
    if (const auto delegates = host.at("delegates"))
        read_delegates(*delegates, setup);
    if (const auto flags = host.at("flags"))
        read_flags(*flags, setup);
    if (const auto guid = host.at("guid"))
        setup.guid = guid->text_or_null();
    if (const auto session = host.at("session"))
        setup.session = session->number();
    if (const auto sequence = host.at("sequence"))
        setup.sequence = sequence->whole();
    if (const auto script = host.at("script"))
        setup.script = script->text_or_null();
    if (const auto page = host.at("storePage"))
        setup.store_page = read_store_page(*page);
    if (const auto guard = host.at("guard"))
        setup.guard = guard->flag() ? std::optional(CloseGuardTimes{}) : std::nullopt;
    if (const auto limited = host.at("trackerLimit"))
        setup.tracker_limit = limited->flag();
    if (const auto consent = host.at("consent"))
        setup.consent = read_consent(*consent);
    return setup;
}

// ---------------------------------------------------------------------------------------------- text, network, video

NetAnswer read_answer(const Reader& reader)
{
    reader.with_keys({"body", "body64", "fail", "after"});
    const auto body = reader.at("body");
    const auto body64 = reader.at("body64");
    const auto fail = reader.at("fail");
    if (int(body.has_value()) + int(body64.has_value()) + int(fail.has_value()) > 1)
        reader.refuse("at most one of \"body\", \"body64\" and \"fail\"");
    NetAnswer answer;
    if (body)
        answer.body = body->text();
    if (body64) {
        auto bytes = from_base64(body64->text());
        if (!bytes)
            body64->refuse("bytes in base64");
        answer.body = std::move(*bytes);
    }
    if (fail) {
        answer.ok = false;
        answer.error = fail->text();
    }
    if (const auto after = reader.at("after"))
        answer.after = after->seconds();
    return answer;
}

std::vector<Stall> read_stalls(const Reader& reader)
{
    std::vector<Stall> stalls;
    for (const Reader& each : reader.list("a list of [at, for]")) {
        const std::vector<Reader> pair = each.list("[at, for]");
        if (pair.size() != 2)
            each.refuse("[at, for]");
        stalls.push_back({pair[0].seconds(), pair[1].seconds()});
    }
    return stalls;
}

/// @param setup the defaults
VideoSetup read_video(const Reader& reader, VideoSetup setup)
{
    reader.with_keys({"mode", "duration", "loadAfter", "stalls", "error", "errorForGood"});
    if (const auto mode = reader.at("mode")) {
        const std::string& name = mode->text("\"manual\" or \"auto\"");
        if (name != "manual" && name != "auto")
            mode->refuse("\"manual\" or \"auto\"");
        setup.manual = name == "manual";
    }
    if (const auto duration = reader.at("duration")) {
        setup.duration = duration->seconds();
        // A shorter video could replay endlessly within one microsecond of virtual time.
        if (setup.duration < 1e-6)
            duration->refuse("a number of seconds from 0.000001");
    }
    if (const auto after = reader.at("loadAfter"))
        setup.load_after = after->seconds();
    if (const auto stalls = reader.at("stalls"))
        setup.stalls = read_stalls(*stalls);
    if (const auto error = reader.at("error"); error && !error->is_null())
        setup.error = error->seconds();
    if (const auto error = reader.at("errorForGood"); error && !error->is_null())
        setup.error_for_good = error->seconds();
    return setup;
}

/// Whether a step touches an element of the page, as only played sessions can.
bool touches_elements(const detail::Json& steps)
{
    return steps.is_array() && std::ranges::any_of(steps, [](const detail::Json& step) {
               return step.is_object() && step.contains("touch") && step["touch"].is_object();
           });
}

} // namespace

Scenario read_scenario(std::string_view text, const std::string& file)
{
    const detail::Json json = detail::parse_json(text, file);
    const Reader reader(json, file);
    // A recording is a scenario, too; what it records is not read here.
    reader.with_keys({"recording", "device", "host", "text", "net", "video", "videos", "ad", "steps", "replay"});
    Scenario scenario;
    if (const auto device = reader.at("device"))
        scenario.world.device = read_device(*device);
    if (const auto host = reader.at("host")) {
        scenario.host = read_host(*host, scenario.host);
        scenario.world.cached = read_cached(*host);
        read_origins(*host);
    }
    if (const auto sizes = reader.at("text"))
        for (const auto& [of_text, size] : sizes->entries())
            scenario.world.text.insert_or_assign(of_text, size.size());
    if (const auto answers = reader.at("net"))
        for (const auto& [address, answer] : answers->entries())
            scenario.world.net.insert_or_assign(address, read_answer(answer));
    if (const auto video = reader.at("video"))
        scenario.world.video = read_video(*video, VideoSetup());
    if (const auto videos = reader.at("videos"))
        for (const auto& [address, video] : videos->entries())
            scenario.world.videos.insert_or_assign(address, read_video(video, scenario.world.video));
    const auto ad = reader.at("ad");
    if (!ad)
        throw InputError(file, "", "expected an \"ad\"");
    if (const auto tag = ad->json().is_object() ? ad->at("vast") : std::nullopt) {
        ad->with_keys({"vast"});
        scenario.tag = tag->text("the address of a VAST tag");
        // As in hosts, unless the scenario says otherwise.
        if (const auto host = reader.at("host"); !host || !host->at("guard"))
            scenario.host.guard = CloseGuardTimes{};
    } else {
        scenario.ad = detail::read_ad(ad->json(), file, ad->path(), AdTypes::Lenient);
    }
    const auto steps = reader.at("steps");
    if (!steps)
        throw InputError(file, "", "expected \"steps\"");
    scenario.steps = detail::read_steps(*steps, !reader.at("replay") || !touches_elements(steps->json()));
    return scenario;
}

Surroundings read_surroundings(std::string_view text, const std::string& file)
{
    const detail::Json json = detail::parse_json(text, file);
    const Reader reader(json, file);
    reader.with_keys({"device", "host"});
    Surroundings surroundings;
    if (const auto device = reader.at("device"))
        surroundings.device = read_device(*device);
    if (const auto host = reader.at("host")) {
        surroundings.host = read_host(*host, {});
        surroundings.cached = read_cached(*host);
        surroundings.origins = read_origins(*host);
    }
    return surroundings;
}

} // namespace qoro
