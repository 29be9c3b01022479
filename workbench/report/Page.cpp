#include "workbench/report/Page.h"

#include "formats/Base64.h"
#include "workbench/report/Report.h"
#include "workbench/report/Template.h"

#include <charconv>
#include <string_view>

namespace qoro
{

namespace
{

/// As the policy names it (Content Security Policy Level 3, section 2.3.1).
std::string source_of(std::string_view sha256)
{
    std::string bytes;
    for (std::size_t at = 0; at + 2 <= sha256.size(); at += 2) {
        unsigned value = 0;
        std::from_chars(sha256.data() + at, sha256.data() + at + 2, value, 16);
        bytes += static_cast<char>(value);
    }
    return "'sha256-" + to_base64(bytes) + "'";
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

std::string page_of(const std::string& title, const std::string& data, const PageAdditions& additions)
{
    std::vector<PagePiece> styles{{report_page_css(), QORO_PAGE_CSS_SHA256}};
    styles.insert(styles.end(), additions.styles.begin(), additions.styles.end());
    std::vector<PagePiece> scripts{{report_drawing_js(), QORO_DRAWING_JS_SHA256},
                                   {report_lanes_js(), QORO_LANES_JS_SHA256},
                                   {report_tables_js(), QORO_TABLES_JS_SHA256},
                                   {report_page_js(), QORO_PAGE_JS_SHA256}};
    scripts.insert(scripts.end(), additions.scripts.begin(), additions.scripts.end());
    std::string policy = "default-src 'none'; img-src data:; style-src";
    std::string all_styles;
    for (const PagePiece& style : styles) {
        policy += " " + source_of(style.sha256);
        all_styles.append(all_styles.empty() ? "" : "</style>\n<style>").append(style.text);
    }
    policy += "; script-src";
    std::string all_scripts(additions.html);
    for (const PagePiece& script : scripts) {
        policy += " " + source_of(script.sha256);
        all_scripts.append("<script>").append(script.text).append("</script>\n");
    }
    policy.append("; base-uri 'none'; form-action 'none'").append(additions.policy);

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
    put("@STYLE@", all_styles);
    put("@DATA@", data);
    put("@SCRIPTS@", all_scripts);
    page += rest;
    return page;
}

std::string report_page(const std::string& title, const std::string& data)
{
    return page_of(title, data, {});
}

} // namespace qoro
