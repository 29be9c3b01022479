#include "workbench/check/TextPlace.h"

#include "vast/DocumentPlace.h"
#include "workbench/detail/Json.h"

#include <algorithm>

namespace qoro
{

namespace
{

/// Goes through a JSON text that is known to be valid.
class JsonText
{
public:
    JsonText(std::string_view text, std::string_view wanted) : text_(text), wanted_(wanted) {}

    /// Offset in bytes of the wanted value; absent without one.
    std::optional<std::size_t> find()
    {
        if (text_.starts_with("\xef\xbb\xbf"))
            at_ = 3;
        pass_value("");
        return found_;
    }

private:
    char next()
    {
        at_ = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
        return at_ < text_.size() ? text_[at_] : '\0';
    }

    void pass_value(const std::string& path)
    {
        switch (next()) {
        case '{':
        case '[':
            pass_parts(path, text_[at_] == '{');
            break;
        case '"':
            pass_string();
            break;
        default:
            at_ = std::min(text_.find_first_of(",]} \t\r\n", at_), text_.size());
        }
    }

    void pass_parts(const std::string& path, bool is_object)
    {
        ++at_;
        for (std::size_t index = 0; !found_ && next() != (is_object ? '}' : ']') && at_ < text_.size(); ++index) {
            const std::size_t begin = at_;
            std::string key = std::to_string(index);
            if (is_object) {
                key = pass_string();
                next(); // the colon
                ++at_;
            }
            const std::string part = path_under(path, key);
            if (part == wanted_) {
                found_ = begin;
                return;
            }
            pass_value(part);
            if (!found_ && next() == ',')
                ++at_;
        }
        ++at_;
    }

    std::string pass_string()
    {
        const std::size_t begin = at_++;
        while (at_ < text_.size() && text_[at_] != '"')
            at_ += text_[at_] == '\\' ? 2 : 1;
        ++at_;
        const detail::Json string = detail::Json::parse(text_.substr(begin, at_ - begin), nullptr, false);
        return string.is_string() ? string.get<std::string>() : std::string();
    }

    const std::string_view text_;
    const std::string_view wanted_;
    std::size_t at_ = 0;
    std::optional<std::size_t> found_;
};

TextPlace place_of(std::string_view text, std::size_t offset)
{
    TextPlace place{.line = 1, .column = 1};
    for (const char c : text.substr(0, offset))
        if (c == '\n')
            place = {.line = place.line + 1, .column = 1};
        else if ((static_cast<unsigned char>(c) & 0xC0U) != 0x80)
            ++place.column;
    return place;
}

} // namespace

std::optional<TextPlace> place_in_json(std::string_view text, std::string_view path)
{
    if (path.empty() || !detail::Json::accept(text))
        return std::nullopt;
    const auto offset = JsonText(text, path).find();
    if (!offset)
        return std::nullopt;
    // A byte order mark is no character of the line.
    const std::size_t mark = text.starts_with("\xef\xbb\xbf") ? 3 : 0;
    return place_of(text.substr(mark), *offset - mark);
}

std::optional<TextPlace> place_in(const BaseScenario& base, const std::string& path)
{
    if (base.kind != InputKind::Tag)
        return place_in_json(base.text, path);
    const auto place = vast::place_in_document(base.text, path);
    return place ? std::optional(TextPlace{place->line, place->column}) : std::nullopt;
}

} // namespace qoro
