#include "vast/AdDescription.h"

#include "vast/CreativeChoice.h"
#include "vast/Texts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace qoro::vast
{

namespace
{

using Json = nlohmann::ordered_json;

/// Opaque black, as a decimal ARGB number.
constexpr const char* Black = "4278190080";

/// Text in HTML, also as a quoted attribute's value.
std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text)
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        default:
            result += c;
        }
    return result;
}

/// A literal in a script element.
std::string literal(const std::string& text)
{
    std::string result = Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
    for (std::size_t at = 0; (at = result.find('<', at)) != std::string::npos; at += 6)
        result.replace(at, 1, "\\u003c");
    return result;
}

/// A title of a button of the ad description: "+" and percent escapes are decoded there.
std::string title(std::string_view text)
{
    std::string result;
    for (const char c : text)
        result += c == '%' ? "%25" : c == '+' ? "%2B" : std::string(1, c);
    return result;
}

constexpr std::string_view Style = R"(
  html, body { margin: 0; height: 100%; background: #000; color: #fff; font: 17px/1.4 Arial, sans-serif; }
  body { display: flex; flex-direction: column; align-items: center; justify-content: center; gap: 16px; }
  img { max-width: 100%; max-height: 100%; object-fit: contain; }
  a { display: contents; cursor: pointer; }
  h1 { margin: 0 16px; font-size: 22px; text-align: center; }
  p { margin: 0 16px; color: #ccc; text-align: center; }
  button { min-width: 200px; min-height: 48px; border: 0; border-radius: 8px; padding: 8px 24px; background: #fff;
           color: #000; font: bold 17px Arial, sans-serif; cursor: pointer; }
)";

/// A script that opens an address when an element is clicked.
std::string opens_on_click(const std::string& address)
{
    return "<script>\ndocument.querySelector(\"#ad\").addEventListener(\"click\", event => {\n"
           "  event.preventDefault();\n  mraid.open(" +
           literal(address) + ");\n});\n</script>\n";
}

std::string whole_page(const std::string& language, const std::string& heading, const std::string& body)
{
    return "<!DOCTYPE html>\n<html lang=\"" + escaped(language) +
           "\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           escaped(heading) + "</title>\n<!-- receives mraid.js -->\n<style>" + std::string(Style) +
           "</style>\n</head>\n<body>\n" + body + "</body>\n</html>\n";
}

/// Position behind a start tag, or npos. Names in HTML have no letter case.
std::size_t end_of_tag(std::string_view html, std::string_view name)
{
    for (std::size_t at = html.find('<'); at != std::string_view::npos; at = html.find('<', at + 1)) {
        const std::string_view rest = html.substr(at + 1);
        const bool ends = rest.size() > name.size() &&
                          std::string_view(" \t\r\n>/").find(rest[name.size()]) != std::string_view::npos;
        if (ends && equal_names(rest.substr(0, name.size()), name))
            return html.find('>', at) == std::string_view::npos ? std::string_view::npos : html.find('>', at) + 1;
    }
    return std::string_view::npos;
}

/// A script for HTML that was written for a browser: links open as the kit opens addresses, and so does the companion's
/// own address, when the click is on nothing that handles it. A companion that calls mraid.open() itself is unaffected.
std::string opens_links(const std::string& address)
{
    return "<script>\ndocument.addEventListener(\"click\", event => {\n"
           "  if (event.defaultPrevented)\n    return;\n"
           "  const link = event.target.closest(\"a[href], area[href]\");\n"
           "  if (link && !/^(https?|tel|sms):/i.test(link.href))\n    return;\n"
           "  const address = link ? link.href : event.target.closest(\"button, input, select, textarea\") ? \"\" : " +
           literal(address) +
           ";\n  if (!address)\n    return;\n  event.preventDefault();\n  mraid.open(address);\n});\n</script>\n";
}

std::string html_page(const Companion& companion, const std::string& html, const std::string& heading,
                      const Surroundings& surroundings)
{
    const std::string script = opens_links(companion.click_through.empty() ? "" : requestable(companion.click_through));
    std::size_t head = end_of_tag(html, "head");
    if (head == std::string::npos)
        head = end_of_tag(html, "html");
    if (head == std::string::npos)
        return whole_page(surroundings.language, heading, html + "\n" + script);
    std::string page = html;
    page.insert(head, "<!-- receives mraid.js -->" + script);
    return page;
}

std::string companion_page(const Companion& companion, const Resource& resource, const std::string& heading,
                           const Surroundings& surroundings)
{
    if (resource.kind == Resource::Kind::Html)
        return html_page(companion, resource.text, heading, surroundings);
    const std::string address = escaped(requestable(resource.text));
    std::string picture = "<img src=\"" + address + "\" alt=\"" +
                          escaped(companion.alternative_text.empty() ? heading : companion.alternative_text) + "\">";
    if (!companion.click_through.empty())
        picture = "<a id=\"ad\" href=\"" + escaped(requestable(companion.click_through)) + "\">" + picture + "</a>\n" +
                  opens_on_click(requestable(companion.click_through));
    return whole_page(surroundings.language, heading, picture + "\n");
}

std::string end_card(const Ad& ad, const Surroundings& surroundings)
{
    std::string body = "<h1>" + escaped(ad.title) + "</h1>\n";
    if (!ad.advertiser.empty())
        body += "<p>" + escaped(ad.advertiser) + "</p>\n";
    if (const std::string& address = ad.linear->click_through; !address.empty())
        body += "<button id=\"ad\" type=\"button\">" + escaped(surroundings.button) + "</button>\n" +
                opens_on_click(requestable(address));
    return whole_page(surroundings.language, ad.title, body);
}

/// The frame that takes the place of the page; null unless the chosen companion is one.
const Resource* frame_of(const Ad& ad)
{
    const CompanionChoice choice = choose_companion(ad.companions);
    if (!choice.chosen)
        return nullptr;
    const Resource& resource = ad.companions[*choice.chosen].resources[choice.resource];
    return resource.kind == Resource::Kind::Frame ? &resource : nullptr;
}

/// Whole seconds after which the viewer may skip; absent when that is at the end only.
std::optional<int> skip_seconds(const Linear& linear)
{
    const auto offset = linear.skip_offset ? linear.skip_offset->seconds(linear.duration) : std::nullopt;
    if (!offset || (linear.duration && *offset >= *linear.duration))
        return std::nullopt;
    // Never before the time that the tag permits.
    return static_cast<int>(std::ceil(std::min(*offset, 1e6)));
}

} // namespace

void replace_addresses(ResolvedAd& resolved, const std::function<std::string(const std::string&)>& replace)
{
    const auto change = [&](std::string& address) {
        if (!address.empty())
            address = replace(address);
    };
    const auto change_all = [&](std::vector<Resource>& resources) {
        for (Resource& resource : resources)
            if (resource.kind != Resource::Kind::Html)
                change(resource.text);
    };
    Linear& linear = *resolved.ad.linear;
    change(linear.media_files[*resolved.media.chosen].address);
    change(linear.click_through);
    for (Icon& icon : linear.icons) {
        change_all(icon.resources);
        change(icon.click_through);
    }
    for (Companion& companion : resolved.ad.companions) {
        change_all(companion.resources);
        change(companion.click_through);
    }
}

std::string ad_description(const ResolvedAd& resolved, const Surroundings& surroundings)
{
    const Ad& ad = resolved.ad;
    const Linear& linear = *ad.linear;
    const MediaFile& file = linear.media_files[*resolved.media.chosen];
    const bool has_size = file.width.value_or(0) > 0 && file.height.value_or(0) > 0;
    const std::optional<int> skip = skip_seconds(linear);
    const Resource* const frame = frame_of(ad);
    Json json{{"adType", "VIDEO_EX"},
              {"strVideoUrl", requestable(file.address)},
              {"strWebViewUrl", frame ? requestable(frame->text) : surroundings.page},
              {"fVideoWidth", has_size ? *file.width : 16},
              {"fVideoHeight", has_size ? *file.height : 9},
              {"portraitModeType", "VIDEO_AND_WEBVIEW"},
              {"portraitVideoPos", "TOP"},
              {"landscapeModeType", "ONLY_VIDEO"},
              {"strBackgroundColor", Black},
              {"bIsAutoStart", true},
              {"bIsAutoClose", surroundings.closes_at_end},
              {"iBufferingSufferTime", -1}};
    if (skip) {
        json["iCloseBtnCountdown"] = *skip;
        json["iShowProgressWheel"] = 1;
    } else {
        json["bIsEndedCloseBtn"] = true;
    }
    if (const Icon* icon = choose_icon(linear.icons))
        json["strBrandIconUrl"] = requestable(picture_of(*icon)->text);
    if (!ad.advertiser.empty())
        json["strBrandText"] = ad.advertiser;
    if (linear.click_through.empty() && !linear.custom_click.empty())
        json["arrayButtonsInfo"] = Json::array({Json{{"btn_text", title(surroundings.button)}}});
    if (!linear.click_through.empty())
        json["arrayButtonsInfo"] = Json::array(
            {Json{{"btn_text", title(surroundings.button)},
                  {"launch_type", "inapp"},
                  {"data",
                   Json{{"u", requestable(linear.click_through)}, {"show_nav_bar", true}, {"show_prog_bar", true}}}}});
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string ad_page(const ResolvedAd& resolved, const Surroundings& surroundings)
{
    const Ad& ad = resolved.ad;
    const CompanionChoice choice = choose_companion(ad.companions);
    if (!choice.chosen || frame_of(ad))
        return end_card(ad, surroundings);
    const Companion& companion = ad.companions[*choice.chosen];
    return companion_page(companion, companion.resources[choice.resource], ad.title, surroundings);
}

} // namespace qoro::vast
