#include "record/Redaction.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/JsonText.h"
#include "kit/WebText.h"
#include "platform/Numbers.h"

#include <algorithm>
#include <cstdlib>

namespace qoro
{

namespace
{

constexpr const char* OfDevice = "redacted-device";
constexpr const char* OfViewer = "redacted-guid";
constexpr const char* OfUser = "/home/redacted";
/// A number, since sessions are numbered.
constexpr const char* OfSession = "1111111111";
constexpr std::size_t LeastText = 3;
constexpr std::size_t LeastDigits = 5;

/// Bytes from which a text is replaced also inside a word.
constexpr std::size_t LongText = 8;

bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string in_json(const std::string& text)
{
    std::string quoted;
    append_json_text(quoted, text);
    return quoted.substr(1, quoted.size() - 2);
}

} // namespace

Redaction::Redaction(const DeviceFacts& device, const HostSetup& host)
{
    if (device.imei.length() >= LeastText) {
        replace(device.imei.text(), OfDevice);
        replace(QoroVideoWebViewController::md5(device.imei).text(),
                QoroVideoWebViewController::md5(NSString(OfDevice)).text());
    }
    if (host.guid.length() >= LeastText)
        replace(host.guid.text(), OfViewer);
    const std::string session = std::to_string(truncated_to_64(host.session));
    if (session.size() >= LeastDigits && is_digit(session.front()))
        replacements_.push_back({session, OfSession, Part::OfNumber});
    const char* const home = std::getenv("HOME");
    if (home && std::string_view(home).size() >= LeastText)
        replace(home, OfUser);
    // Of identifiers that contain each other, the longest is meant.
    std::ranges::stable_sort(replacements_, std::greater<>(), [](const auto& each) { return each.text.size(); });
}

void Redaction::replace(const std::string& text, const std::string& by)
{
    for (const std::string& form : {text, in_json(text), percent_encoded(text)})
        if (std::ranges::find(replacements_, form, &Replacement::text) == replacements_.end())
            replacements_.push_back({form, by, form.size() < LongText ? Part::OfWord : Part::Any});
}

/// Whether a place in a text is a part of something longer that the replacement must not tear apart.
bool Redaction::is_inside(const Replacement& each, std::string_view text, std::size_t at)
{
    const auto belongs = [&](std::size_t place) {
        return is_digit(text[place]) || (each.part == Part::OfWord && is_letter(text[place]));
    };
    if (each.part == Part::Any)
        return false;
    const std::size_t end = at + each.text.size();
    const bool after_escape = at >= 3 && text[at - 3] == '%';
    return (at > 0 && belongs(at - 1) && !after_escape) || (end < text.size() && belongs(end));
}

std::string Redaction::of(std::string_view text) const
{
    std::string redacted(text);
    for (const Replacement& each : replacements_)
        for (std::size_t at = 0; (at = redacted.find(each.text, at)) != std::string::npos;) {
            const bool part = is_inside(each, redacted, at);
            if (!part)
                redacted.replace(at, each.text.size(), each.by);
            at += part ? 1 : each.by.size();
        }
    return redacted;
}

} // namespace qoro
