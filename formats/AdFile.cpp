#include "formats/AdFile.h"

#include "formats/AdAddresses.h"
#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "formats/detail/AdJson.h"
#include "formats/detail/AdProperties.h"
#include "formats/detail/Names.h"
#include "platform/AddressParts.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <type_traits>
#include <variant>
#include <vector>

namespace qoro
{

namespace
{

using detail::AdProperties;
using detail::AdProperty;
using detail::Entries;
using detail::Enumerator;
using detail::enumerators;
using detail::Json;
using detail::shown;
using detail::under;

/// A whole number of the given type; absent for any other value, and for one out of the type's range.
template <typename Number>
std::optional<Number> whole_number(const Json& json)
{
    if (json.is_number_unsigned() && json.get<std::uint64_t>() <= std::uint64_t(std::numeric_limits<Number>::max()))
        return static_cast<Number>(json.get<std::uint64_t>());
    if (json.is_number_integer() && !json.is_number_unsigned() &&
        json.get<std::int64_t>() >= std::numeric_limits<Number>::min())
        return static_cast<Number>(json.get<std::int64_t>());
    if (!json.is_number_float())
        return std::nullopt;
    const double number = json.get<double>();
    if (std::trunc(number) != number || std::abs(number) > std::numeric_limits<Number>::max())
        return std::nullopt;
    return static_cast<Number>(number);
}

/// Reads one ad. Every error names the file and the JSON path.
class Reader
{
public:
    Reader(const std::string& file, AdTypes types) : file_(file), strict_(types == AdTypes::Strict) {}

    std::shared_ptr<QoroVideoAd> read(const Json& json, const std::string& path) const
    {
        if (!json.is_object())
            refuse(path, "expected an object with the ad's properties", json);
        auto ad = std::make_shared<QoroVideoAd>();
        for (const auto& [name, value] : json.items())
            read_property(*ad, name, value, under(path, name));
        return ad;
    }

private:
    [[noreturn]] void refuse(const std::string& path, const std::string& expected, const Json& got) const
    {
        throw InputError(file_, path, expected + ", got " + shown(got));
    }
    /// Throws if strict; otherwise returns, and the value is absent.
    void wrong_type(const std::string& path, const std::string& expected, const Json& got) const
    {
        if (strict_)
            refuse(path, expected, got);
    }

    void read_property(QoroVideoAd& ad, const std::string& name, const Json& value, const std::string& path) const
    {
        const auto* property = std::ranges::find(AdProperties, name, &AdProperty::name);
        if (property == AdProperties.end())
            throw InputError(file_, path, "no property of an ad" + detail::did_you_mean(name, names()));
        if (value.is_null())
            return;
        std::visit([&](auto member) { read_value(ad.*member, value, path, property->entries); }, property->member);
    }

    static std::vector<std::string_view> names()
    {
        std::vector<std::string_view> all;
        all.reserve(AdProperties.size());
        for (const AdProperty& property : AdProperties)
            all.push_back(property.name);
        return all;
    }

    template <typename Enumeration>
    requires std::is_enum_v<Enumeration>
    void read_value(Enumeration& into, const Json& json, const std::string& path, Entries) const
    {
        const std::span<const Enumerator> known = enumerators<Enumeration>();
        if (json.is_string()) {
            const auto row = std::ranges::find(known, json.get_ref<const std::string&>(), &Enumerator::name);
            if (row == known.end())
                refuse(path, expected_enumerator(known), json);
            into = static_cast<Enumeration>(row->number);
            return;
        }
        const auto number = whole_number<std::int32_t>(json);
        const bool named =
            number && (*number == 0 || std::ranges::find(known, *number, &Enumerator::number) != known.end());
        if (!named)
            wrong_type(path, expected_enumerator(known), json);
        if (number)
            into = static_cast<Enumeration>(*number);
    }

    static std::string expected_enumerator(std::span<const Enumerator> known)
    {
        std::string list;
        for (const Enumerator& one : known)
            list += (list.empty() ? "" : ", ") + std::string(one.name);
        return "expected one of " + list + ", or its number";
    }

    void read_value(std::int32_t& into, const Json& json, const std::string& path, Entries) const
    {
        const auto number = whole_number<std::int32_t>(json);
        if (!number)
            wrong_type(path, "expected a whole number", json);
        into = number.value_or(json.is_number_float() ? truncated(json.get<double>()) : 0);
    }

    void read_value(float& into, const Json& json, const std::string& path, Entries) const
    {
        const bool fits = json.is_number() && std::abs(json.get<double>()) <= std::numeric_limits<float>::max();
        if (!fits)
            wrong_type(path, "expected a number", json);
        else
            into = static_cast<float>(json.get<double>());
    }

    void read_value(bool& into, const Json& json, const std::string& path, Entries) const
    {
        if (json.is_boolean())
            into = json.get<bool>();
        else
            wrong_type(path, "expected true or false", json);
    }

    void read_value(NSString& into, const Json& json, const std::string& path, Entries) const
    {
        if (json.is_string())
            into = json.get_ref<const std::string&>();
        else
            wrong_type(path, "expected a text", json);
    }

    void read_value(NSArray& into, const Json& json, const std::string& path, Entries entries) const
    {
        if (!json.is_array()) {
            wrong_type(path, "expected a list of " + plural(entries), json);
            return;
        }
        if (strict_)
            check_entries(json, path, entries);
        into = to_value(json).array();
    }

    void read_value(NSDictionary& into, const Json& json, const std::string& path, Entries entries) const
    {
        if (!json.is_object()) {
            wrong_type(path, "expected an object with lists of " + plural(entries), json);
            return;
        }
        for (const auto& [key, list] : json.items()) {
            if (!list.is_array())
                wrong_type(under(path, key), "expected a list of " + plural(entries), list);
            else if (strict_)
                check_entries(list, under(path, key), entries);
        }
        into = to_value(json).dictionary();
    }

    void check_entries(const Json& list, const std::string& path, Entries entries) const
    {
        for (std::size_t i = 0; i < list.size(); ++i)
            if (!is_entry(list[i], entries))
                refuse(under(path, i), "expected " + singular(entries), list[i]);
    }

    static bool is_entry(const Json& json, Entries entries)
    {
        switch (entries) {
        case Entries::Texts:
            return json.is_string();
        case Entries::Objects:
            return json.is_object();
        case Entries::WholeNumbers:
            return whole_number<std::int32_t>(json).has_value();
        case Entries::None:
            break;
        }
        return true;
    }

    static std::string singular(Entries entries)
    {
        return entries == Entries::Texts ? "a text" : entries == Entries::Objects ? "an object" : "a whole number";
    }
    static std::string plural(Entries entries)
    {
        return entries == Entries::Texts ? "texts" : entries == Entries::Objects ? "objects" : "whole numbers";
    }

    const std::string& file_;
    const bool strict_;
};

bool is_fetchable(std::string_view address)
{
    const AddressParts parts(address);
    return parts.has_scheme("") || parts.has_scheme("http") || parts.has_scheme("https");
}

/// The portrait layout keeps the video's aspect ratio, unless the video fills the screen.
bool divides_by_video_size(const QoroVideoAd& ad)
{
    const bool has_portrait_layout =
        ad.portraitModeType != 0 && ad.launchOrientation != UIDeviceOrientationLandscapeLeft;
    return ad.strVideoUrl && has_portrait_layout && ad.portraitVideoPos != FULL;
}

void require_positive(float extent, std::string_view name, const std::string& file)
{
    if (!(extent > 0))
        throw InputError(file, under("", name),
                         "expected the video's size, more than 0, since its band on the screen keeps its proportions");
}

} // namespace

std::shared_ptr<QoroVideoAd> detail::read_ad(const Json& json, const std::string& file, const std::string& path,
                                             AdTypes types)
{
    return Reader(file, types).read(json, path);
}

std::shared_ptr<QoroVideoAd> read_ad(std::string_view text, const std::string& file, AdTypes types)
{
    return detail::read_ad(detail::parse_json(text, file), file, "", types);
}

std::shared_ptr<QoroVideoAd> copy_of(const QoroVideoAd& ad)
{
    auto copy = std::make_shared<QoroVideoAd>();
    for (const AdProperty& property : AdProperties)
        std::visit(
            [&](auto member) {
                // An NSDictionary is a reference, and the session empties it.
                if constexpr (std::is_same_v<decltype(member), NSDictionary QoroVideoAd::*>)
                    (*copy).*member = (ad.*member).copy();
                else
                    (*copy).*member = ad.*member;
            },
            property.member);
    return copy;
}

void require_playable(const QoroVideoAd& ad, const std::string& file)
{
    if (divides_by_video_size(ad)) {
        require_positive(ad.fVideoWidth, "fVideoWidth", file);
        require_positive(ad.fVideoHeight, "fVideoHeight", file);
    }
    visit_addresses(ad, [&file](AdAddressUse use, const std::string& path, const std::string& address) {
        if (use != AdAddressUse::Target && !is_fetchable(address))
            throw InputError(file, path,
                             "expected an address of http or https, or one in the ad's folder, got " +
                                 shown(Json(address)));
    });
}

std::shared_ptr<QoroVideoAd> read_ad_file(const std::string& file)
{
    auto ad = read_ad(read_input_file(file), file, AdTypes::Strict);
    require_playable(*ad, file);
    return ad;
}

} // namespace qoro
