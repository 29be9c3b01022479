#include "formats/ScenarioParts.h"

#include "formats/JsonText.h"
#include "formats/detail/AdProperties.h"

#include <type_traits>
#include <utility>
#include <variant>

namespace qoro
{

namespace
{

Value size_or_null(const std::optional<CGSize>& size)
{
    return size ? Value(NSArray{size->width, size->height}) : Value();
}

template <typename T>
Value value_or_null(const std::optional<T>& value)
{
    return value ? Value(*value) : Value();
}

std::string text_of(const Value& value)
{
    std::string text;
    append_json(text, value);
    return text;
}

template <typename Numbers>
NSArray list_of(const Numbers& numbers)
{
    std::vector<Value> values;
    values.reserve(numbers.size());
    for (const auto& each : numbers)
        values.emplace_back(each);
    return NSArray(std::move(values));
}

Value consent_of(const ConsentStrings& consent)
{
    return NSDictionary{{"tcf", value_or_null(consent.tcf)},
                        {"gdprApplies", value_or_null(consent.gdpr_applies)},
                        {"usPrivacy", value_or_null(consent.us_privacy)},
                        {"gpp", value_or_null(consent.gpp)},
                        {"gppSections", list_of(consent.gpp_sections)}};
}

template <typename T>
Value property_value(const T& value)
{
    if constexpr (std::is_same_v<T, float>)
        return value == 0 ? Value() : Value(static_cast<double>(value));
    else if constexpr (std::is_same_v<T, bool>)
        return value ? Value(true) : Value();
    else if constexpr (std::is_enum_v<T> || std::is_integral_v<T>)
        return value == T{} ? Value() : Value(static_cast<std::int64_t>(value));
    else
        return Value(value);
}

} // namespace

std::string device_text(const DeviceSetup& device)
{
    NSDictionary json{{"screen", size_or_null(device.facts.screen)},
                      {"orientation", static_cast<int>(device.orientation)},
                      {"statusBarOrientation", static_cast<int>(device.status_bar_orientation)},
                      {"statusBarHidden", device.status_bar_hidden},
                      {"phone", device.facts.phone},
                      {"iOS8", device.facts.ios8},
                      {"outputVolume", static_cast<double>(device.output_volume)},
                      {"volumeSlider", device.volume_slider},
                      {"canOpen", list_of(device.can_open)},
                      {"canSendText", value_or_null(device.facts.can_send_text)},
                      {"calendar", device.calendar},
                      {"imei", device.facts.imei},
                      {"displayName", device.facts.display_name}};
    if (device.facts.current_screen)
        json.setObject(size_or_null(device.facts.current_screen), "currentScreen");
    return text_of(json);
}

std::string host_text(const HostSetup& host)
{
    std::vector<Value> delegates;
    if (host.delegate)
        delegates.emplace_back("qoroDelegate");
    if (host.interstitial_delegate)
        delegates.emplace_back("interstitialDelegate");
    NSDictionary json{{"autorotates", list_of(host.autorotates)},
                      {"rootView", size_or_null(host.root_view)},
                      {"keyWindow", host.key_window},
                      {"parent", host.parent},
                      {"parentWindow", host.parent_window},
                      {"delegates", NSArray(std::move(delegates))},
                      {"flags", NSDictionary{{"bIsLockOneSide", host.lock_one_side},
                                             {"bIsLockOneSideAndIsLandscape", host.lock_one_side_landscape},
                                             {"bIsLockOneSideAndIsPortrait", host.lock_one_side_portrait},
                                             {"bUseAutoRotate", host.use_auto_rotate},
                                             {"instSendImpPolicy", static_cast<int>(host.impression_policy)}}},
                      {"guid", host.guid},
                      {"session", host.session},
                      {"sequence", host.sequence},
                      {"script", host.script},
                      {"guard", host.guard.has_value()},
                      {"trackerLimit", host.tracker_limit},
                      {"consent", consent_of(host.consent)}};
    json.setObject(is_store_page(host.store_page) ? Value(host.store_page) : Value(), "storePage");
    return text_of(json);
}

std::string ad_text(const QoroVideoAd& ad)
{
    NSDictionary json = NSDictionary::dictionary();
    for (const detail::AdProperty& property : detail::AdProperties)
        std::visit(
            [&](auto member) {
                if (Value value = property_value(ad.*member))
                    json.setObject(std::move(value), property.name);
            },
            property.member);
    return text_of(json);
}

std::string steps_text(const std::vector<Step>& steps)
{
    std::vector<Value> list;
    list.reserve(steps.size());
    for (const Step& step : steps)
        list.emplace_back(NSDictionary{{"at", step.at}, {step.key, step.value}});
    return text_of(NSArray(std::move(list)));
}

} // namespace qoro
