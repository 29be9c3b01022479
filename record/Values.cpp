#include "record/Values.h"

#include "formats/Base64.h"
#include "platform/Foundation.h"

#include <array>
#include <limits>
#include <utility>
#include <vector>

namespace qoro::detail
{

namespace
{

std::string hex(std::string_view bytes)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string text;
    for (const char each : bytes) {
        text += Digits[static_cast<unsigned char>(each) >> 4U];
        text += Digits[static_cast<unsigned char>(each) & 0xFU];
    }
    return text;
}

bool is_text(std::string_view bytes)
{
    return NSString::with_utf8(bytes) && bytes.find('\0') == std::string_view::npos;
}

/// Key of bytes that are no text.
std::string base64_key(const std::string& key)
{
    return key + "64";
}

} // namespace

void set_bytes(NSDictionary& value, const std::string& key, const std::string& bytes)
{
    if (is_text(bytes))
        value.setObject(bytes, key);
    else
        value.setObject(to_base64(bytes), base64_key(key));
}

std::optional<std::string> bytes_at(const NSDictionary& value, const std::string& key)
{
    if (value.contains(base64_key(key)))
        return from_base64(value[base64_key(key)].text());
    return value.contains(key) ? std::optional(value[key].text()) : std::nullopt;
}

// A page's body is shown, so it is kept; of a picture or a tracker's answer, a hash is.
Value value_of(const FetchAnswer& answer, bool whole)
{
    NSDictionary value = NSDictionary::dictionary();
    value.setObject(answer.ok, "ok");
    if (!answer.ok)
        value.setObject(answer.error, "error");
    if (whole) {
        set_bytes(value, "body", answer.body);
    } else {
        value.setObject(static_cast<std::int64_t>(answer.body.size()), "bytes");
        value.setObject(hex(CC_MD5(answer.body)), "md5");
    }
    value.setObject(answer.final_address, "address");
    return value;
}

FetchAnswer fetch_answer_of(const Value& value)
{
    const NSDictionary answer = value.dictionary();
    std::string body = bytes_at(answer, "body").value_or("");
    // Of bytes that are hashed, number and content do not matter to a session, only that there are some.
    if (answer["bytes"].integer() > 0)
        body = "\xFF" + answer["md5"].text();
    return {answer["ok"].boolValue(), answer["error"].text(), std::move(body), answer["address"].text()};
}

Value value_of(const PageState& state)
{
    return NSDictionary{{"address", state.address.absoluteString()},
                        {"title", state.title},
                        {"secure", state.secure},
                        {"loading", state.loading},
                        {"progress", state.progress},
                        {"content", state.has_content},
                        {"back", state.can_go_back},
                        {"forward", state.can_go_forward}};
}

PageState page_state_of(const Value& value)
{
    const NSDictionary state = value.dictionary();
    return {.address = url_of(state["address"]),
            .title = state["title"].text(),
            .secure = state["secure"].boolValue(),
            .loading = state["loading"].boolValue(),
            .progress = state["progress"].doubleValue(),
            .has_content = state["content"].boolValue(),
            .can_go_back = state["back"].boolValue(),
            .can_go_forward = state["forward"].boolValue()};
}

Value value_of(const PageReport& report)
{
    return NSDictionary{{"kind", static_cast<int>(report.kind)},
                        {"message", report.message},
                        {"file", report.file},
                        {"line", report.line ? Value(*report.line) : Value()},
                        {"status", report.status ? Value(*report.status) : Value()},
                        {"times", report.times}};
}

PageReport page_report_of(const Value& value)
{
    const NSDictionary report = value.dictionary();
    const auto number = [&](const char* key) {
        return report[key] ? std::optional(report[key].integer()) : std::nullopt;
    };
    return {.kind = static_cast<PageReport::Kind>(report["kind"].integer()),
            .message = report["message"].text(),
            .file = report["file"].text(),
            .line = number("line"),
            .status = number("status"),
            .times = report["times"].integer()};
}

Value value_of(CGSize size)
{
    return NSArray{size.width, size.height};
}

CGSize size_of(const Value& value)
{
    const NSArray size = value.array();
    return {size[0].doubleValue(), size[1].doubleValue()};
}

Value value_of(const std::optional<PageTouch>& touch)
{
    if (!touch)
        return {};
    return NSDictionary{{"point", NSArray{touch->point.x, touch->point.y}}, {"element", touch->element}};
}

std::optional<PageTouch> page_touch_of(const Value& value)
{
    if (!value)
        return std::nullopt;
    const NSDictionary touch = value.dictionary();
    const NSArray point = touch["point"].array();
    return PageTouch{{point[0].doubleValue(), point[1].doubleValue()}, touch["element"].text()};
}

double finite_or_infinity(const Value& value)
{
    return value ? value.doubleValue() : std::numeric_limits<double>::infinity();
}

NSURL url_of(const Value& value)
{
    return value ? NSURL::URLWithString(value.string()) : NSURL();
}

} // namespace qoro::detail
