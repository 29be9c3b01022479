#include "formats/detail/Json.h"

#include "formats/InputError.h"
#include "platform/ShortText.h"

#include <algorithm>

namespace qoro::detail
{

namespace
{

/// The deepest nesting of brackets outside strings. Checked before parsing, to bound recursion (to_value, dump).
int nesting(std::string_view text)
{
    int depth = 0;
    int deepest = 0;
    bool in_text = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (in_text) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                in_text = false;
        } else if (c == '"') {
            in_text = true;
        } else if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return deepest;
}

std::string line_and_column(std::string_view text, std::size_t byte)
{
    const std::string_view before = text.substr(0, byte == 0 ? 0 : byte - 1);
    const auto line = 1 + std::ranges::count(before, '\n');
    const std::size_t last_break = before.rfind('\n');
    const std::size_t column = last_break == std::string_view::npos ? before.size() + 1 : before.size() - last_break;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

} // namespace

Json parse_json(std::string_view text, const std::string& file)
{
    if (nesting(text) > DeepestNesting)
        throw InputError(file, "", "lists and objects stand more than " + std::to_string(DeepestNesting) + " deep");
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        throw InputError(file, "", "no JSON at " + line_and_column(text, error.byte));
    } catch (const Json::out_of_range&) {
        throw InputError(file, "", "a number is too large");
    }
}

std::string shown(const Json& json)
{
    constexpr std::size_t Longest = 60;
    return shortened(json.dump(-1, ' ', false, Json::error_handler_t::replace), Longest);
}

std::string under(const std::string& path, std::string_view key)
{
    std::string result = path + "/";
    for (const char c : key) {
        // Escapes of a JSON pointer (RFC 6901, section 3); control characters would break the one-line error.
        if (c == '~')
            result += "~0";
        else if (c == '/')
            result += "~1";
        else
            result += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
    }
    return result;
}

std::string under(const std::string& path, std::size_t index)
{
    return path + "/" + std::to_string(index);
}

} // namespace qoro::detail
