#include "formats/AdRemarks.h"

#include "formats/AdAddresses.h"
#include "formats/InputError.h"
#include "formats/detail/Json.h"
#include "formats/detail/Names.h"
#include "platform/AddressParts.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>
#include <string_view>

namespace qoro
{

namespace
{

using detail::under;

constexpr auto ButtonKeys =
    std::to_array<std::string_view>({"btn_text", "btn_tracking_urls", "action", "launch_type", "app_u", "id", "data"});
constexpr auto DataKeys =
    std::to_array<std::string_view>({"u", "tel", "b", "e", "show_nav_bar", "show_prog_bar", "bk_c", "custom_close"});
constexpr auto Milestones =
    std::to_array<std::string_view>({"start", "firstQuartile", "midpoint", "thirdQuartile", "complete"});

bool is_digits(std::string_view text)
{
    return !text.empty() && std::ranges::all_of(text, [](char each) { return each >= '0' && each <= '9'; });
}

class Remarks
{
public:
    explicit Remarks(const std::string& file) : file_(file) {}

    void add(const std::string& path, const std::string& remark)
    {
        lines.push_back(InputError(file_, path, remark).what());
    }

    void check_keys(const NSDictionary& record, const std::string& path, const std::string& what,
                    std::span<const std::string_view> known)
    {
        for (const std::string& key : record.allKeys())
            if (std::ranges::find(known, key) == known.end())
                add(under(path, key), "has no effect: no " + what + detail::did_you_mean(key, known));
    }

    void check_color(const NSString& color, const std::string& path)
    {
        if (color && !is_digits(color.text()))
            add(path, "has no effect: expected a colour as a decimal ARGB number, such as \"4278190080\" for black");
    }

    std::vector<std::string> lines;

private:
    const std::string& file_;
};

} // namespace

std::vector<std::string> ad_remarks(const QoroVideoAd& ad, const std::string& file)
{
    Remarks remarks(file);
    remarks.check_color(ad.strBackgroundColor, "/strBackgroundColor");
    remarks.check_keys(ad.dicTrackingUrls, "/dicTrackingUrls", "milestone of a video", Milestones);
    for (const std::string& key : ad.dicProgressTrackingUrls.allKeys())
        if (!is_digits(key))
            remarks.add(under("/dicProgressTrackingUrls", key), "has no effect: expected whole seconds");
    for (std::size_t i = 0; i < ad.arrayPrePauseLocations.count(); ++i)
        if (ad.arrayPrePauseLocations[i].intValue() < 0)
            remarks.add(under("/arrayPrePauseLocations", i), "has no effect: before the video's beginning");
    for (std::size_t i = 0; i < ad.arrayButtonsInfo.count(); ++i) {
        const std::string path = under("/arrayButtonsInfo", i);
        const NSDictionary button = ad.arrayButtonsInfo[i].dictionary();
        const NSDictionary data = button["data"].dictionary();
        remarks.check_keys(button, path, "key of a button", ButtonKeys);
        remarks.check_keys(data, under(path, "data"), "key of a button's data", DataKeys);
        remarks.check_color(data["bk_c"].string(), under(under(path, "data"), "bk_c"));
    }
    return remarks.lines;
}

std::vector<std::string> missing_files(const QoroVideoAd& ad, const std::string& file, const std::string& folder,
                                       const std::function<bool(const std::string& address)>& provided)
{
    Remarks remarks(file);
    visit_addresses(ad, [&](AdAddressUse use, const std::string& path, const std::string& address) {
        const AddressParts parts(address);
        if (use != AdAddressUse::Content || !parts.names_no_server() || (provided && provided(address)))
            return;
        const std::string escaped = address.substr(0, address.find_first_of("?#"));
        const NSString decoded = stringByReplacingPercentEscapes(escaped);
        std::string_view name = decoded ? decoded.text() : escaped;
        name.remove_prefix(std::min(name.find_first_not_of('/'), name.size()));
        std::error_code unknown;
        if (!std::filesystem::is_regular_file(std::filesystem::path(folder) / name, unknown))
            remarks.add(path, "no such file: " + std::string(name));
    });
    return remarks.lines;
}

} // namespace qoro
