#include "kit/NextVideoAddresses.h"

#include <array>
#include <string_view>

namespace qoro
{

namespace
{

/// Macros whose values differ between this check and the request. They count as unknown, so that a host with one is
/// refused.
constexpr std::array<std::string_view, 2> VaryingMacros{"{CurrentTime}", "{TotalTime}"};

/// Collects the first refused address of a record.
class Search
{
public:
    Search(const std::string& page, NetworkZone open, const std::function<NSString(const NSString&)>& expand)
        : page_(page), open_(open), expand_(expand)
    {
    }

    void address(const NSString& text) { check(text, text); }

    void tracker(const NSString& text)
    {
        if (!text)
            return;
        std::string constant = text.text();
        for (const std::string_view macro : VaryingMacros)
            for (std::size_t at = 0; (at = constant.find(macro, at)) != std::string::npos;)
                constant.replace(at, macro.size(), "{}");
        check(text, expand_(constant));
    }

    void trackers(const NSArray& list)
    {
        for (const Value& entry : list)
            tracker(entry.string());
    }

    void button(const NSDictionary& button)
    {
        trackers(button["btn_tracking_urls"].array());
        address(button["app_u"].string());
        address(button["data"].dictionary()["u"].string());
    }

    const NSString& found() const { return found_; }

private:
    /// @param used the text as the ad uses it
    void check(const NSString& text, const NSString& used)
    {
        if (found_ || !used)
            return;
        if (NSURL::URLWithString(used).parts().has_scheme("file") || leads_inward(page_, used.text(), open_))
            found_ = text;
    }

    const std::string& page_;
    const NetworkZone open_;
    const std::function<NSString(const NSString&)>& expand_;
    NSString found_;
};

} // namespace

NSString inward_address_in(const NSDictionary& record, const std::string& page, NetworkZone open,
                           const std::function<NSString(const NSString&)>& expand)
{
    Search search(page, open, expand);
    search.address(record["v_u"].string());
    for (const NSDictionary::Entry& milestone : record["v_tracking"].dictionary())
        search.trackers(milestone.value.array());
    search.tracker(record["tracking_u"].string());
    search.trackers(record["replay_tracking_urls"].array());
    for (const Value& button : record["btns"].array())
        search.button(button.dictionary());
    return search.found();
}

} // namespace qoro
