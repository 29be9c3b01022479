#include "formats/AdInput.h"

#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "formats/detail/AdProperties.h"
#include "formats/detail/Json.h"
#include "platform/AddressParts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <optional>

namespace qoro
{

namespace
{

constexpr const char* Expected =
    "expected an ad file or a scenario (JSON), a VAST tag (XML), a folder with an ad.json, "
    "or an address of http or https";

/// Stops at the first key that only a scenario has, or only an ad.
class DecisiveKey final : public nlohmann::json_sax<detail::Json>
{
public:
    std::optional<InputKind> kind() const { return kind_; }

    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool start_object(std::size_t) override { return ++depth_ <= detail::DeepestNesting; }
    bool end_object() override { return depth_-- > 0; }
    bool start_array(std::size_t) override { return ++depth_ <= detail::DeepestNesting; }
    bool end_array() override { return depth_-- > 0; }
    bool key(string_t& key) override
    {
        if (depth_ > 1)
            return true;
        if (key == "ad" || key == "steps" || key == "recording")
            kind_ = InputKind::Scenario;
        else if (std::ranges::find(detail::AdProperties, key, &detail::AdProperty::name) != detail::AdProperties.end())
            kind_ = InputKind::Ad;
        return !kind_;
    }
    // The reader of the file reports malformed JSON.
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    int depth_ = 0;
    std::optional<InputKind> kind_;
};

/// The first character of a text that is no white space, after a byte order mark; absent without one.
std::optional<char> first_character(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n", text.starts_with("\xef\xbb\xbf") ? 3 : 0);
    return first == std::string_view::npos ? std::nullopt : std::optional(text[first]);
}

bool is_json(std::string_view text)
{
    return first_character(text) == '{' || first_character(text) == '[';
}

std::optional<InputKind> kind_of_json(std::string_view text)
{
    DecisiveKey key;
    detail::Json::sax_parse(text, &key);
    return key.kind();
}

/// Whether a name has the form of an address, of any scheme.
bool is_address(const std::string& named)
{
    const std::size_t colon = named.find("://");
    return colon != std::string::npos && colon > 0 && named.find('/') > colon;
}

/// Whether a text is an HTML page. Read as a tag it would be refused, but with an error that does not help.
bool is_page(std::string_view text)
{
    text.remove_prefix(std::min(text.find('<'), text.size()));
    return std::ranges::any_of(std::array<std::string_view, 2>{"<!doctype html", "<html"}, [text](auto begin) {
        return std::ranges::equal(begin, text.substr(0, begin.size()), {}, {},
                                  [](unsigned char c) { return std::tolower(c); });
    });
}

} // namespace

bool is_xml(std::string_view text)
{
    for (const std::string_view mark : {"\xef\xbb\xbf", "\xff\xfe", "\xfe\xff"})
        if (text.starts_with(mark))
            text.remove_prefix(mark.size());
    const std::size_t first = text.find_first_not_of(std::string_view(" \t\r\n\0", 5));
    return first != std::string_view::npos && text[first] == '<';
}

std::string ad_file_of(const std::string& named)
{
    std::error_code unknown;
    if (!std::filesystem::is_directory(named, unknown))
        return named;
    const std::filesystem::path file = std::filesystem::path(named) / "ad.json";
    if (!std::filesystem::exists(file, unknown))
        throw InputError(named, "", "the folder has no ad.json");
    return file.string();
}

AdInput read_ad_input(const std::string& named, InputKind unclear)
{
    if (AddressParts(named).is_web())
        return {.kind = InputKind::Tag, .name = named, .is_address = true};
    if (is_address(named))
        throw InputError(named, "", Expected);
    AdInput input{.name = ad_file_of(named)};
    input.text = read_input_file(input.name);
    if (named == "-")
        input.name = "stdin";
    if (is_xml(input.text)) {
        if (is_page(input.text))
            throw InputError(input.name, "",
                             "a page (HTML), which an ad names as its strWebViewUrl; " + std::string(Expected));
        input.kind = InputKind::Tag;
        return input;
    }
    if (!first_character(input.text))
        throw InputError(input.name, "", "the file is empty; " + std::string(Expected));
    if (!is_json(input.text))
        throw InputError(input.name, "", Expected);
    input.kind = kind_of_json(input.text).value_or(unclear);
    return input;
}

AdInput read_tag_input(const std::string& named)
{
    AdInput input{.kind = InputKind::Tag, .name = named, .is_address = AddressParts(named).is_web()};
    if (input.is_address)
        return input;
    if (is_address(named))
        throw InputError(named, "", "expected a file, or an address of http or https");
    input.text = read_input_file(named);
    if (is_json(input.text))
        throw InputError(named, "",
                         "line 1, column 1: expected a VAST tag (XML), got JSON; qoro-ad play shows an ad file");
    return input;
}

} // namespace qoro
