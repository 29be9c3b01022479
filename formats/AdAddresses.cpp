#include "formats/AdAddresses.h"

#include "formats/AdFile.h"
#include "formats/detail/AdProperties.h"
#include "formats/detail/Json.h"
#include "platform/AddressParts.h"

#include <utility>
#include <vector>

namespace qoro
{

namespace
{

using detail::AdProperties;
using detail::AdProperty;
using detail::under;

/// Gives every address of an ad to a visitor, and puts what comes back in its place.
class AddressWalk
{
public:
    using Visit = std::function<std::string(AdAddressUse, const std::string&, const std::string&)>;

    explicit AddressWalk(const Visit& visit) : visit_(visit) {}

    void walk(QoroVideoAd& ad) const
    {
        for (const AdProperty& property : AdProperties) {
            if (property.addresses)
                std::visit([&](auto member) { walk_value(ad.*member, property); }, property.member);
        }
        ad.arrayButtonsInfo = buttons(ad.arrayButtonsInfo, under("", "arrayButtonsInfo"));
    }

private:
    template <typename Other>
    void walk_value(Other&, const AdProperty&) const
    {
    }
    void walk_value(NSString& address, const AdProperty& property) const
    {
        if (address.length() > 0)
            address = visit_(*property.addresses, under("", property.name), address.text());
    }
    void walk_value(NSArray& addresses, const AdProperty& property) const
    {
        addresses = list(addresses, *property.addresses, under("", property.name));
    }
    void walk_value(NSDictionary& lists, const AdProperty& property) const
    {
        for (const std::string& key : lists.allKeys()) {
            const std::string path = under(under("", property.name), key);
            if (const NSArray addresses = lists[key].array())
                lists.setObject(list(addresses, *property.addresses, path), key);
        }
    }

    NSArray list(const NSArray& addresses, AdAddressUse use, const std::string& path) const
    {
        if (!addresses)
            return addresses;
        std::vector<Value> rewritten(addresses.begin(), addresses.end());
        for (std::size_t i = 0; i < rewritten.size(); ++i) {
            const NSString address = rewritten[i].string();
            if (address.length() > 0 && !address.isEqualToString("c"))
                rewritten[i] = visit_(use, under(path, i), address.text());
        }
        return NSArray(std::move(rewritten));
    }

    NSArray buttons(const NSArray& descriptions, const std::string& path) const
    {
        if (!descriptions)
            return descriptions;
        std::vector<Value> rewritten(descriptions.begin(), descriptions.end());
        for (std::size_t i = 0; i < rewritten.size(); ++i)
            if (const NSDictionary description = rewritten[i].dictionary())
                rewritten[i] = button(description.copy(), under(path, i));
        return NSArray(std::move(rewritten));
    }

    NSDictionary button(NSDictionary description, const std::string& path) const
    {
        if (const NSArray trackers = description["btn_tracking_urls"].array())
            description.setObject(list(trackers, AdAddressUse::Tracker, under(path, "btn_tracking_urls")),
                                  "btn_tracking_urls");
        NSDictionary data = description["data"].dictionary().copy();
        const NSString target = data["u"].string();
        if (target.length() > 0) {
            data.setObject(visit_(AdAddressUse::Target, under(under(path, "data"), "u"), target.text()), "u");
            description.setObject(data, "data");
        }
        return description;
    }

    const Visit& visit_;
};

std::string escaped(std::string_view address)
{
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string text;
    for (const char c : address) {
        const auto byte = static_cast<unsigned char>(c);
        const bool allowed =
            byte > 0x20 && byte < 0x7f && std::string_view("\"<>\\^`|").find(c) == std::string_view::npos;
        if (allowed)
            text += c;
        else
            text.append({'%', Digits[byte >> 4], Digits[byte & 0xf]});
    }
    return text;
}

} // namespace

void rewrite_addresses(QoroVideoAd& ad,
                       const std::function<std::string(AdAddressUse, const std::string&, const std::string&)>& visit)
{
    AddressWalk(visit).walk(ad);
}

void visit_addresses(const QoroVideoAd& ad,
                     const std::function<void(AdAddressUse, const std::string&, const std::string&)>& visit)
{
    rewrite_addresses(*copy_of(ad), [&visit](AdAddressUse use, const std::string& path, const std::string& address) {
        visit(use, path, address);
        return address;
    });
}

std::string address_on_server(std::string_view address, const std::string& server)
{
    if (!AddressParts(address).names_no_server())
        return std::string(address);
    while (address.starts_with("./"))
        address.remove_prefix(2);
    return server + (address.starts_with('/') ? "" : "/") + escaped(address);
}

} // namespace qoro
