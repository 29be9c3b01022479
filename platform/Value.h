#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace qoro
{

class Value;

/// A text or null. Null is not the empty text: it has length 0 too, but it is absent.
class NSString
{
public:
    NSString() = default;
    NSString(std::nullptr_t) {}
    NSString(std::string text) : text_(std::move(text)) {}
    NSString(std::string_view text) : text_(std::string(text)) {}
    NSString(const char* text) : text_(std::string(text)) {}

    /// The text of UTF-8 bytes; null when they are no valid UTF-8.
    static NSString with_utf8(std::string_view bytes);

    explicit operator bool() const { return text_.has_value(); }
    /// Bytes of UTF-8; 0 when absent.
    std::size_t length() const { return text_ ? text_->size() : 0; }
    /// The text itself; the empty text when absent.
    const std::string& text() const;
    /// The same text. False when either side is null.
    bool isEqualToString(const NSString& other) const;
    /// The leading decimal number (blanks and a sign may stand before it), 0 when there is none; held within 32 bits.
    std::int32_t intValue() const;
    bool contains(std::string_view part) const;

    /// Structural equality: null equals null. For tests and tables; rules compare with isEqualToString.
    friend bool operator==(const NSString&, const NSString&) = default;

private:
    std::optional<std::string> text_;
};

/// A list of values or null; null is not the empty list. Copies share their content.
class NSArray
{
public:
    NSArray() = default;
    NSArray(std::nullptr_t) {}
    NSArray(std::initializer_list<Value> values);
    explicit NSArray(std::vector<Value> values);
    static NSArray of_strings(std::initializer_list<const char*> texts);

    explicit operator bool() const { return values_ != nullptr; }
    std::size_t count() const;
    /// The value at an index; null outside the list.
    const Value& operator[](std::size_t index) const;
    const Value* begin() const;
    const Value* end() const;

private:
    std::shared_ptr<const std::vector<Value>> values_;
};

/// A mapping from text to value that keeps the order in which its keys came, or null; null is not the empty mapping.
/// Copies are references to one mapping, as the kit hands mutable dictionaries around. A key that is a number in the
/// kit's terms is its decimal text here.
class NSDictionary
{
public:
    struct Entry;

    NSDictionary() = default;
    NSDictionary(std::nullptr_t) {}
    NSDictionary(std::initializer_list<Entry> entries);
    /// A new, empty, mutable dictionary.
    static NSDictionary dictionary();

    explicit operator bool() const { return entries_ != nullptr; }
    std::size_t count() const;
    /// The value under a key; null when the key or the dictionary is absent.
    const Value& objectForKey(std::string_view key) const;
    const Value& operator[](std::string_view key) const { return objectForKey(key); }
    bool contains(std::string_view key) const;
    /// Stores a value, in the key's place when it is there already. Nothing on a null dictionary.
    void setObject(Value value, std::string_view key);
    void removeObjectForKey(std::string_view key);
    void removeAllObjects();
    /// The keys as they stand now, in order. Empty for a null dictionary.
    std::vector<std::string> allKeys() const;
    /// A new dictionary with the same entries; null for null.
    NSDictionary copy() const;
    const Entry* begin() const;
    const Entry* end() const;

private:
    std::shared_ptr<std::vector<Entry>> entries_;
};
using NSMutableDictionary = NSDictionary;

/// What a record, a button description or a script message holds under a name: null, a boolean, a number, a text, a
/// list or a mapping. Reading it as another type gives null (or zero): other people's data is never trusted.
class Value
{
public:
    Value() = default;
    Value(std::nullptr_t) {}
    Value(bool flag) : content_(flag) {}
    Value(int number) : content_(static_cast<std::int64_t>(number)) {}
    Value(std::int64_t number) : content_(number) {}
    Value(double number) : content_(number) {}
    Value(const char* text) : content_(std::string(text)) {}
    Value(std::string_view text) : content_(std::string(text)) {}
    Value(std::string text) : content_(std::move(text)) {}
    Value(const NSString& text);
    Value(NSArray list);
    Value(NSDictionary mapping);

    bool is_null() const { return std::holds_alternative<std::monostate>(content_); }
    explicit operator bool() const { return !is_null(); }
    bool is_bool() const { return std::holds_alternative<bool>(content_); }
    bool is_integer() const { return std::holds_alternative<std::int64_t>(content_); }
    bool is_double() const { return std::holds_alternative<double>(content_); }
    bool is_number() const { return is_bool() || is_integer() || is_double(); }
    bool is_string() const { return std::holds_alternative<std::string>(content_); }
    bool is_array() const { return std::holds_alternative<NSArray>(content_); }
    bool is_dictionary() const { return std::holds_alternative<NSDictionary>(content_); }

    /// The text; null when this is no text.
    NSString string() const;
    /// The text itself; the empty text when this is none.
    const std::string& text() const;
    /// The whole number; 0 when this is none.
    std::int64_t integer() const { return is_integer() ? std::get<std::int64_t>(content_) : 0; }
    /// The list; null when this is none.
    NSArray array() const;
    /// The mapping; null when this is none.
    NSDictionary dictionary() const;
    /// A number, or a text's leading number, as a whole number truncated toward zero; 0 for anything else.
    std::int32_t intValue() const;
    /// A number in single precision; a text's leading number; 0 for anything else.
    float floatValue() const;
    double doubleValue() const;
    /// A number that is not 0, or a text that begins with Y, y, T, t or a non-zero number; false for anything else.
    bool boolValue() const;
    /// A number as decimal text, a text as itself; null for anything else.
    NSString stringValue() const;

    /// Structural equality, lists and mappings by content and order.
    friend bool operator==(const Value& a, const Value& b);

private:
    std::variant<std::monostate, bool, std::int64_t, double, std::string, NSArray, NSDictionary> content_;
};

/// A key with its value.
struct NSDictionary::Entry {
    std::string key;
    Value value;
};

/// Bytes or null. Copies share the bytes; bytes of the program itself are pointed to, not copied.
class NSData
{
public:
    NSData() = default;
    NSData(std::nullptr_t) {}
    explicit NSData(std::string bytes);
    /// Bytes that outlive every use of them (the compiled-in images).
    static NSData dataWithBytesNoCopy(const unsigned char* bytes, std::size_t length);

    explicit operator bool() const { return bytes_ != nullptr; }
    const unsigned char* bytes() const { return bytes_; }
    std::size_t length() const { return length_; }
    std::string_view view() const;

private:
    std::shared_ptr<const std::string> owner_;
    const unsigned char* bytes_ = nullptr;
    std::size_t length_ = 0;
};

/// An address or null.
class NSURL
{
public:
    NSURL() = default;
    NSURL(std::nullptr_t) {}
    /// The address of a text; null for a null or empty text, or one with blanks, controls or a malformed escape, of
    /// which no address can be made.
    static NSURL URLWithString(const NSString& text);
    static NSURL fileURLWithPath(const NSString& path);

    explicit operator bool() const { return static_cast<bool>(text_); }
    bool is_file() const { return file_; }
    /// Whether its scheme is http or https.
    bool is_web() const;
    /// The address as text, for a file its path; null when absent.
    const NSString& absoluteString() const { return text_; }

private:
    NSString text_;
    bool file_ = false;
};

/// What went wrong, in words for the kit's delegates.
struct NSError {
    NSString text;
};

/// Percent escapes decoded, as UTF-8; null when an escape is malformed or the outcome is no UTF-8, or the text is null.
NSString stringByReplacingPercentEscapes(const NSString& text);

} // namespace qoro
