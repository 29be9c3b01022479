#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/TextFormat.h"
#include "platform/Numbers.h"
#include "platform/QoroAdManager.h"

#include <string>
#include <string_view>

namespace qoro
{

namespace
{

using Ad = QoroVideoWebViewController;

struct Macro {
    std::string_view name;
    std::string (*value)(const Ad&);
};

std::string currentTime(const Ad& ad)
{
    const auto time = static_cast<float>(ad.qoroMoviePlayer.currentPlaybackTime());
    return time >= 0 ? fixed_text(time, 6) : "0";
}

std::string totalTime(const Ad& ad)
{
    return ad.fTotalTime > 0 ? fixed_text(ad.fTotalTime, 6) : "";
}

/// In replacement order; each also applies to the values that earlier macros inserted.
constexpr Macro macros[] = {
    {"{CurrentTime}", currentTime},
    {"{TotalTime}", totalTime},
    {"{Zulix-Guid}", [](const Ad& ad) { return objectText(ad.strCookieGuid); }},
    {"{Zulix-Sid}", [](const Ad& ad) { return fixed_text(ad.dSessionId, 0); }},
    {"{Zulix-Seq}", [](const Ad& ad) { return std::to_string(ad.iSeqNo); }},
    {"{Zulix-app}", [](const Ad&) { return objectText(Ad::md5(bundleDisplayName())); }},
    {"{Zulix-uuid}", [](const Ad&) { return objectText(QoroAdManager::sharedInstance().imei()); }},
    {"{Zulix-uuid-md5}", [](const Ad&) { return objectText(Ad::md5(QoroAdManager::sharedInstance().imei())); }},
};

std::string replacedAll(std::string_view text, std::string_view part, const std::string& value)
{
    std::string result;
    std::size_t rest = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, rest)) {
        result.append(text, rest, at - rest).append(value);
        rest = at + part.size();
    }
    return result.append(text, rest);
}

} // namespace

NSString QoroVideoWebViewController::getTrackingUniqueInfo(const NSString& url) const
{
    if (!url)
        return nullptr;
    std::string text = url.text();
    for (const Macro& macro : macros) {
        if (text.find(macro.name) != std::string::npos)
            text = replacedAll(text, macro.name, macro.value(*this));
    }
    return text;
}

NSString QoroVideoWebViewController::md5(const NSString& text)
{
    if (!text)
        return nullptr;
    const std::string_view bytes = text.text();
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hexadecimal;
    for (const char byte : CC_MD5(bytes.substr(0, bytes.find('\0')))) {
        const auto value = static_cast<unsigned char>(byte);
        hexadecimal += digits[value >> 4U];
        hexadecimal += digits[value & 0xFU];
    }
    return hexadecimal;
}

} // namespace qoro
