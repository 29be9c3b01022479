#include "workbench/report/Report.h"

#include "workbench/report/Drawing.h"
#include "workbench/report/Template.h"

#include <array>
#include <charconv>
#include <string_view>

namespace qoro
{

namespace
{

/// A piece of the page that the security policy names by its hash.
struct Piece {
    std::string_view text;
    /// SHA-256 in hexadecimal, made by the build.
    std::string_view sha256;
};

/// As the policy names it (Content Security Policy Level 3, section 2.3.1).
std::string source_of(std::string_view sha256)
{
    std::string bytes;
    for (std::size_t at = 0; at + 2 <= sha256.size(); at += 2) {
        unsigned value = 0;
        std::from_chars(sha256.data() + at, sha256.data() + at + 2, value, 16);
        bytes += static_cast<char>(value);
    }
    return "'sha256-" + base64_of(bytes) + "'";
}

std::string html_of(std::string_view text)
{
    std::string html;
    for (const char c : text)
        if (c == '&')
            html += "&amp;";
        else if (c == '<')
            html += "&lt;";
        else if (c == '>')
            html += "&gt;";
        else if (c == '"')
            html += "&quot;";
        else
            html += c;
    return html;
}

} // namespace

std::string report_page(const std::string& title, const std::string& data)
{
    const Piece style{report_page_css(), QORO_PAGE_CSS_SHA256};
    const std::array scripts{
        Piece{report_drawing_js(), QORO_DRAWING_JS_SHA256}, Piece{report_lanes_js(), QORO_LANES_JS_SHA256},
        Piece{report_tables_js(), QORO_TABLES_JS_SHA256}, Piece{report_page_js(), QORO_PAGE_JS_SHA256}};
    std::string policy = "default-src 'none'; img-src data:; style-src " + source_of(style.sha256) + "; script-src";
    std::string all_scripts;
    for (const Piece& script : scripts) {
        policy += " " + source_of(script.sha256);
        all_scripts.append("<script>").append(script.text).append("</script>\n");
    }
    policy += "; base-uri 'none'; form-action 'none'";

    std::string page;
    std::string_view rest = report_page_html();
    const auto put = [&](std::string_view mark, std::string_view text) {
        const std::size_t at = rest.find(mark);
        page += rest.substr(0, at);
        page += text;
        rest.remove_prefix(at + mark.size());
    };
    put("@POLICY@", policy);
    put("@TITLE@", html_of(title));
    put("@STYLE@", style.text);
    put("@DATA@", data);
    put("@SCRIPTS@", all_scripts);
    page += rest;
    return page;
}

} // namespace qoro
