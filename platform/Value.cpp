#include "platform/Value.h"

#include "platform/Numbers.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace qoro
{

namespace
{

const Value NullValue;

/// Length of the UTF-8 sequence at the start of the bytes; 0 when it is malformed, which includes overlong forms,
/// surrogates and code points above U+10FFFF (RFC 3629, section 4).
std::size_t utf8_sequence_length(std::string_view bytes)
{
    struct Form {
        unsigned char first_from, first_to;
        unsigned char second_from, second_to;
        std::size_t length;
    };
    static constexpr Form forms[] = {
        {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3},
        {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
        {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
    };
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    if (byte(0) < 0x80)
        return 1;
    for (const Form& form : forms) {
        if (byte(0) < form.first_from || byte(0) > form.first_to)
            continue;
        if (bytes.size() < form.length || byte(1) < form.second_from || byte(1) > form.second_to)
            return 0;
        for (std::size_t at = 2; at < form.length; ++at)
            if ((byte(at) & 0xC0) != 0x80)
                return 0;
        return form.length;
    }
    return 0;
}

bool is_utf8(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t length = utf8_sequence_length(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

int hex_digit(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

/// The byte of the escape ("%4a") at the start of the text; -1 when it is malformed.
int escaped_byte(std::string_view text)
{
    if (text.size() < 3)
        return -1;
    const int high = hex_digit(text[1]);
    const int low = hex_digit(text[2]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

bool is_digit(char letter)
{
    return letter >= '0' && letter <= '9';
}

std::string_view without_leading_blanks(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
    return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

/// Removes a leading sign; returns whether it was a minus.
bool take_sign(std::string_view& text)
{
    const bool signed_text = !text.empty() && (text.front() == '-' || text.front() == '+');
    const bool minus = signed_text && text.front() == '-';
    if (signed_text)
        text.remove_prefix(1);
    return minus;
}

double leading_number(std::string_view text)
{
    text = without_leading_blanks(text);
    const bool minus = take_sign(text);
    // from_chars also accepts "inf" and "nan".
    if (text.empty() || !(is_digit(text.front()) || text.front() == '.'))
        return 0;
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range) {
        const std::string_view used(text.data(), static_cast<std::size_t>(end - text.data()));
        const bool tiny = used.find("e-") != used.npos || used.find("E-") != used.npos || used.front() == '.' ||
                          used.starts_with("0.");
        number = tiny ? 0 : std::numeric_limits<double>::infinity();
    }
    return minus ? -number : number;
}

float in_single_precision(double number)
{
    using Limits = std::numeric_limits<float>;
    if (std::fabs(number) <= static_cast<double>(Limits::max()) || std::isnan(number))
        return static_cast<float>(number);
    return number < 0 ? -Limits::infinity() : Limits::infinity();
}

bool leads_with_truth(std::string_view text)
{
    text = without_leading_blanks(text);
    if (!text.empty() && std::strchr("YyTt", text.front()))
        return true;
    return leading_number(text) != 0;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------- NSString

NSString NSString::with_utf8(std::string_view bytes)
{
    return is_utf8(bytes) ? NSString(bytes) : NSString();
}

const std::string& NSString::empty_text()
{
    static const std::string empty;
    return empty;
}

bool NSString::isEqualToString(const NSString& other) const
{
    return text_ && other.text_ && *text_ == *other.text_;
}

std::int32_t NSString::intValue() const
{
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(leading_integer(text()), Limits::min(), Limits::max()));
}

bool NSString::contains(std::string_view part) const
{
    return text_ && text_->find(part) != std::string::npos;
}

// ----------------------------------------------------------------------------------------------------------- NSArray

NSArray::NSArray(std::initializer_list<Value> values) : NSArray(std::vector<Value>(values))
{
}

NSArray::NSArray(std::vector<Value> values) : values_(std::make_shared<const std::vector<Value>>(std::move(values)))
{
}

NSArray NSArray::of_strings(std::initializer_list<const char*> texts)
{
    return NSArray(std::vector<Value>(texts.begin(), texts.end()));
}

std::size_t NSArray::count() const
{
    return values_ ? values_->size() : 0;
}

const Value& NSArray::operator[](std::size_t index) const
{
    return index < count() ? (*values_)[index] : NullValue;
}

const Value* NSArray::begin() const
{
    return values_ ? values_->data() : nullptr;
}

const Value* NSArray::end() const
{
    return begin() + count();
}

// ------------------------------------------------------------------------------------------------------ NSDictionary

NSDictionary::NSDictionary(std::initializer_list<Entry> entries) : NSDictionary(dictionary())
{
    entries_->reserve(entries.size());
    for (const Entry& entry : entries)
        setObject(entry.value, entry.key);
}

NSDictionary NSDictionary::dictionary()
{
    NSDictionary made;
    made.entries_ = std::make_shared<std::vector<Entry>>();
    return made;
}

std::size_t NSDictionary::count() const
{
    return entries_ ? entries_->size() : 0;
}

const Value& NSDictionary::objectForKey(std::string_view key) const
{
    if (entries_)
        for (const Entry& entry : *entries_)
            if (entry.key == key)
                return entry.value;
    return NullValue;
}

bool NSDictionary::contains(std::string_view key) const
{
    return entries_ && std::ranges::find(*entries_, key, &Entry::key) != entries_->end();
}

void NSDictionary::setObject(Value value, std::string_view key)
{
    if (!entries_)
        return;
    const auto place = std::ranges::find(*entries_, key, &Entry::key);
    if (place == entries_->end())
        entries_->push_back({std::string(key), std::move(value)});
    else
        place->value = std::move(value);
}

void NSDictionary::removeObjectForKey(std::string_view key)
{
    if (entries_)
        std::erase_if(*entries_, [&](const Entry& each) { return each.key == key; });
}

void NSDictionary::removeAllObjects()
{
    if (entries_)
        entries_->clear();
}

std::vector<std::string> NSDictionary::allKeys() const
{
    std::vector<std::string> keys;
    keys.reserve(count());
    for (const Entry& entry : *this)
        keys.push_back(entry.key);
    return keys;
}

NSDictionary NSDictionary::copy() const
{
    NSDictionary made;
    if (entries_)
        made.entries_ = std::make_shared<std::vector<Entry>>(*entries_);
    return made;
}

const NSDictionary::Entry* NSDictionary::begin() const
{
    return entries_ ? entries_->data() : nullptr;
}

const NSDictionary::Entry* NSDictionary::end() const
{
    return begin() + count();
}

// ------------------------------------------------------------------------------------------------------------- Value

Value::Value(const NSString& text)
{
    if (text)
        content_ = text.text();
}

Value::Value(NSArray list)
{
    if (list)
        content_ = std::move(list);
}

Value::Value(NSDictionary mapping)
{
    if (mapping)
        content_ = std::move(mapping);
}

NSString Value::string() const
{
    const auto* text = std::get_if<std::string>(&content_);
    return text ? NSString(*text) : NSString();
}

const std::string& Value::text() const
{
    static const std::string none;
    const auto* text = std::get_if<std::string>(&content_);
    return text ? *text : none;
}

NSArray Value::array() const
{
    const auto* list = std::get_if<NSArray>(&content_);
    return list ? *list : NSArray();
}

NSDictionary Value::dictionary() const
{
    const auto* mapping = std::get_if<NSDictionary>(&content_);
    return mapping ? *mapping : NSDictionary();
}

std::span<const Value> Value::values() const
{
    const auto* list = std::get_if<NSArray>(&content_);
    return list ? std::span(list->begin(), list->end()) : std::span<const Value>();
}

std::span<const NSDictionary::Entry> Value::entries() const
{
    const auto* mapping = std::get_if<NSDictionary>(&content_);
    return mapping ? std::span(mapping->begin(), mapping->end()) : std::span<const NSDictionary::Entry>();
}

std::int32_t Value::intValue() const
{
    return truncated(doubleValue());
}

float Value::floatValue() const
{
    return in_single_precision(doubleValue());
}

double Value::doubleValue() const
{
    if (const auto* flag = std::get_if<bool>(&content_))
        return *flag ? 1 : 0;
    if (const auto* number = std::get_if<std::int64_t>(&content_))
        return static_cast<double>(*number);
    if (const auto* number = std::get_if<double>(&content_))
        return *number;
    if (const auto* text = std::get_if<std::string>(&content_))
        return leading_number(*text);
    return 0;
}

bool Value::boolValue() const
{
    if (const auto* text = std::get_if<std::string>(&content_))
        return leads_with_truth(*text);
    return doubleValue() != 0;
}

NSString Value::stringValue() const
{
    if (const auto* flag = std::get_if<bool>(&content_))
        return *flag ? "1" : "0";
    if (const auto* number = std::get_if<std::int64_t>(&content_))
        return std::to_string(*number);
    if (const auto* number = std::get_if<double>(&content_))
        return shortest_text(*number);
    return string();
}

bool operator==(const Value& a, const Value& b)
{
    if (a.content_.index() != b.content_.index())
        return false;
    if (a.is_null())
        return true;
    if (a.is_array())
        return std::ranges::equal(a.array(), b.array());
    if (a.is_dictionary())
        return std::ranges::equal(a.dictionary(), b.dictionary(),
                                  [](const NSDictionary::Entry& left, const NSDictionary::Entry& right) {
                                      return left.key == right.key && left.value == right.value;
                                  });
    if (const auto* text = std::get_if<std::string>(&a.content_))
        return *text == std::get<std::string>(b.content_);
    if (const auto* number = std::get_if<std::int64_t>(&a.content_))
        return *number == std::get<std::int64_t>(b.content_);
    return a.doubleValue() == b.doubleValue();
}

// ------------------------------------------------------------------------------------------------------------ NSData

NSData::NSData(std::string bytes)
    : owner_(std::make_shared<const std::string>(std::move(bytes))),
      bytes_(reinterpret_cast<const unsigned char*>(owner_->data())), length_(owner_->size())
{
}

NSData NSData::dataWithBytesNoCopy(const unsigned char* bytes, std::size_t length)
{
    NSData data;
    data.bytes_ = bytes;
    data.length_ = length;
    return data;
}

std::string_view NSData::view() const
{
    return {reinterpret_cast<const char*>(bytes_), length_};
}

// ------------------------------------------------------------------------------------------------------------- NSURL

struct NSURL::Content {
    Content(const NSString& as_written, bool of_file)
        : text(as_written), is_file(of_file), parts(is_file ? AddressParts() : AddressParts(text.text()))
    {
    }
    // The parts are views of the text.
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;

    const NSString text;
    const bool is_file;
    const AddressParts parts;
};

NSURL NSURL::URLWithString(const NSString& text)
{
    const std::string_view address = text.text();
    if (address.empty())
        return {};
    for (std::size_t at = 0; at < address.size(); ++at) {
        const auto letter = static_cast<unsigned char>(address[at]);
        if (letter <= ' ' || letter == 0x7F || (letter == '%' && escaped_byte(address.substr(at)) < 0))
            return {};
    }
    return NSURL(std::make_shared<const Content>(text, false));
}

NSURL NSURL::fileURLWithPath(const NSString& path)
{
    return path ? NSURL(std::make_shared<const Content>(path, true)) : NSURL();
}

bool NSURL::is_file() const
{
    return content_ && content_->is_file;
}

const NSString& NSURL::absoluteString() const
{
    static const NSString null;
    return content_ ? content_->text : null;
}

const AddressParts& NSURL::parts() const
{
    static const AddressParts none;
    return content_ ? content_->parts : none;
}

// ---------------------------------------------------------------------------------------------------- Percent escapes

NSString stringByReplacingPercentEscapes(const NSString& text)
{
    if (!text)
        return {};
    std::string_view rest = text.text();
    std::string decoded;
    decoded.reserve(rest.size());
    while (!rest.empty()) {
        const bool escape = rest.front() == '%';
        const int byte = escape ? escaped_byte(rest) : static_cast<unsigned char>(rest.front());
        if (byte < 0)
            return {};
        decoded.push_back(static_cast<char>(byte));
        rest.remove_prefix(escape ? 3 : 1);
    }
    return NSString::with_utf8(decoded);
}

} // namespace qoro
