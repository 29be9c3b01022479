#include "formats/AdRemarks.h"

#include "formats/AdAddresses.h"
#include "formats/AdFolder.h"
#include "formats/InputError.h"
#include "formats/detail/Json.h"
#include "formats/detail/Names.h"
#include "platform/AddressParts.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string_view>
#include <system_error>

namespace qoro
{

namespace
{

using detail::under;

constexpr auto ButtonKeys =
    std::to_array<std::string_view>({"btn_text", "btn_tracking_urls", "action", "launch_type", "app_u", "id", "data"});
constexpr auto DataKeys =
    std::to_array<std::string_view>({"u", "tel", "b", "e", "show_nav_bar", "show_prog_bar", "bk_c", "custom_close"});
constexpr auto EventKeys =
    std::to_array<std::string_view>({"id", "description", "location", "summary", "start", "end", "status",
                                     "transparency", "reminder", "timezone", "recurrence"});
constexpr auto RecurrenceKeys =
    std::to_array<std::string_view>({"frequency", "interval", "expires", "exceptionDates", "daysInWeek", "daysInMonth",
                                     "daysInYear", "weeksInMonth", "monthsInYear"});
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
        std::uint32_t argb = 0;
        const std::string& text = color.text();
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), argb);
        if (color && (text.empty() || error != std::errc() || end != text.data() + text.size()))
            add(path, "shown as white: expected a colour as a decimal ARGB number, such as \"4278190080\" for black");
    }

    /// Of a mapping whose other entries are null.
    void check_type(const NSDictionary& record, const char* key, const std::string& path, bool fits,
                    const std::string& expected)
    {
        if (record[key] != Value() && !fits)
            add(under(path, key), "has no effect: expected " + expected);
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
        const NSDictionary event = data["e"].dictionary();
        const std::string event_path = under(under(path, "data"), "e");
        remarks.check_keys(event, event_path, "field of a calendar event", EventKeys);
        remarks.check_keys(event["recurrence"].dictionary(), under(event_path, "recurrence"), "field of a recurrence",
                           RecurrenceKeys);
        for (const char* text : {"btn_text", "action", "launch_type", "app_u"})
            remarks.check_type(button, text, path, bool(button[text].string()), "a text");
        remarks.check_type(button, "btn_tracking_urls", path, bool(button["btn_tracking_urls"].array()),
                           "a list of texts");
        remarks.check_type(button, "data", path, bool(data), "an object");
        for (const char* text : {"u", "tel", "b", "bk_c"})
            remarks.check_type(data, text, under(path, "data"), bool(data[text].string()), "a text");
        remarks.check_color(data["bk_c"].string(), under(under(path, "data"), "bk_c"));
    }
    return remarks.lines;
}

std::vector<std::string> remarks_on_duration(const QoroVideoAd& ad, const std::string& file, double duration)
{
    Remarks remarks(file);
    const std::string behind = "has no effect: behind the video's end at " + shortest_text(duration) + " s";
    for (std::size_t i = 0; i < ad.arrayPrePauseLocations.count(); ++i)
        if (ad.arrayPrePauseLocations[i].intValue() >= duration)
            remarks.add(under("/arrayPrePauseLocations", i), behind);
    for (const std::string& key : ad.dicProgressTrackingUrls.allKeys())
        if (is_digits(key) && Value(key).doubleValue() >= duration)
            remarks.add(under("/dicProgressTrackingUrls", key), behind);
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
        const std::filesystem::path name = name_in_folder(address);
        if (!is_file_in_folder(name, folder))
            remarks.add(path, "no such file: " + name.string() + file_suggestion(name, folder));
    });
    return remarks.lines;
}

} // namespace qoro
