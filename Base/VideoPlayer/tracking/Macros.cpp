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

/// Replaces every occurrence of a part, the first of which is at a known place.
void replaceAll(std::string& text, std::string_view part, std::size_t first, const std::string& value)
{
    std::size_t rest = first + part.size();
    std::size_t at = text.find(part, rest);
    if (at == std::string::npos) { // as in most addresses
        text.replace(first, part.size(), value);
        return;
    }
    // In linear time: the address is a stranger's.
    std::string result = text.substr(0, first) + value;
    for (; at != std::string::npos; at = text.find(part, rest)) {
        result.append(text, rest, at - rest).append(value);
        rest = at + part.size();
    }
    text = result.append(text, rest);
}

} // namespace

NSString QoroVideoWebViewController::getTrackingUniqueInfo(const NSString& url) const
{
    if (!url)
        return nullptr;
    std::string text = url.text();
    // Most addresses have a macro or two, so the search ends when no brace is left.
    std::size_t brace = text.find('{');
    for (const Macro& macro : macros) {
        if (brace == std::string::npos)
            break;
        const std::size_t at = text.find(macro.name, brace);
        if (at == std::string::npos)
            continue;
        replaceAll(text, macro.name, at, macro.value(*this));
        brace = text.find('{', brace);
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
