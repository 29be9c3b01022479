#pragma once

#include "platform/AddressParts.h"
#include "platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace QORO_EXPORT qoro
{

class Value;

/// A UTF-8 text, or null. Null differs from the empty text, though its length is 0 too.
class NSString
{
public:
    /// Null.
    /// @{
    NSString() = default;
    NSString(std::nullptr_t) {}
    /// @}
    /// A copy of the text, which must be valid UTF-8 and is not checked; with_utf8 checks untrusted bytes. A character
    /// pointer must not be null.
    /// @{
    NSString(std::string text) : text_(std::move(text)) {}
    NSString(std::string_view text) : text_(std::string(text)) {}
    NSString(const char* text) : text_(std::string(text)) {}
    /// @}

    /// Validates the bytes; null when they are not valid UTF-8.
    static NSString with_utf8(std::string_view bytes);

    /// False for null; true for the empty text.
    explicit operator bool() const { return text_.has_value(); }
    /// Length in bytes; 0 for null.
    std::size_t length() const { return text_ ? text_->size() : 0; }
    /// The text; empty for null.
    const std::string& text() const { return text_ ? *text_ : empty_text(); }
    /// Whether both texts are equal; false when either is null.
    bool isEqualToString(const NSString& other) const;
    /// The leading decimal integer, after optional blanks and a sign, clamped to 32 bits; 0 without one.
    std::int32_t intValue() const;
    /// Whether the text contains a part, compared by bytes; false for null.
    bool contains(std::string_view part) const;

    /// Structural equality: null equals null. For tests and tables; the rules use isEqualToString.
    friend bool operator==(const NSString&, const NSString&) = default;

private:
    static const std::string& empty_text();

    std::optional<std::string> text_;
};

/// An immutable list of values, or null; null differs from the empty list. Copies share their content.
class NSArray
{
public:
    /// Null.
    /// @{
    NSArray() = default;
    NSArray(std::nullptr_t) {}
    /// @}
    /// A list of these values; not null, even without values.
    /// @{
    NSArray(std::initializer_list<Value> values);
    explicit NSArray(std::vector<Value> values);
    /// @}
    /// A list of texts.
    static NSArray of_strings(std::initializer_list<const char*> texts);

    /// False for null; true for the empty list.
    explicit operator bool() const { return values_ != nullptr; }
    /// Number of values; 0 for null.
    std::size_t count() const;
    /// The value at an index; null when out of range.
    const Value& operator[](std::size_t index) const;
    /// The values in order, for range-based loops; an empty range for null.
    /// @{
    const Value* begin() const;
    const Value* end() const;
    /// @}

private:
    std::shared_ptr<const std::vector<Value>> values_;
};

/// A mapping from text to value in insertion order, or null; null differs from the empty mapping. Copies refer to the
/// same mapping, since the kit passes mutable dictionaries by reference. Numeric keys are stored as decimal text.
class NSDictionary
{
public:
    struct Entry;

    /// Null.
    /// @{
    NSDictionary() = default;
    NSDictionary(std::nullptr_t) {}
    /// @}
    /// A new mapping with these entries; of entries with equal keys the last value counts.
    NSDictionary(std::initializer_list<Entry> entries);
    /// Creates an empty dictionary.
    static NSDictionary dictionary();

    /// False for null; true for the empty mapping.
    explicit operator bool() const { return entries_ != nullptr; }
    /// Number of entries; 0 for null.
    std::size_t count() const;
    /// The value of a key; null when the key is missing or the dictionary null. The reference is valid until the
    /// mapping changes.
    /// @{
    const Value& objectForKey(std::string_view key) const;
    const Value& operator[](std::string_view key) const { return objectForKey(key); }
    /// @}
    /// Whether the key has an entry, whose value may be null; false for a null dictionary.
    bool contains(std::string_view key) const;
    /// Sets a value; an existing key retains its position. No effect on a null dictionary.
    void setObject(Value value, std::string_view key);
    /// Removes the key's entry. No effect without one.
    void removeObjectForKey(std::string_view key);
    /// Removes every entry. No effect on a null dictionary.
    void removeAllObjects();
    /// A snapshot of the keys in order; empty for a null dictionary.
    std::vector<std::string> allKeys() const;
    /// A shallow copy; null for null.
    NSDictionary copy() const;
    /// Number of handles that refer to the mapping, this one included; 0 for null.
    std::size_t count_of_handles() const { return static_cast<std::size_t>(entries_.use_count()); }
    /// The entries in order, for range-based loops; an empty range for null. Invalidated by a change of the mapping.
    /// @{
    const Entry* begin() const;
    const Entry* end() const;
    /// @}

private:
    std::shared_ptr<std::vector<Entry>> entries_;
};
/// The same type: every dictionary is mutable.
using NSMutableDictionary = NSDictionary;

/// A value of a record, a button description or a script message: null, a boolean, a number, a text, a list or a
/// mapping. Reading it as another type yields null or zero, because the data is untrusted.
class Value
{
public:
    /// Null.
    /// @{
    Value() = default;
    Value(std::nullptr_t) {}
    /// @}
    /// A boolean, an integer or a floating-point number.
    /// @{
    Value(bool flag) : content_(flag) {}
    Value(int number) : content_(static_cast<std::int64_t>(number)) {}
    Value(std::int64_t number) : content_(number) {}
    Value(double number) : content_(number) {}
    /// @}
    /// A copy of a UTF-8 text, which is not checked. A character pointer must not be null.
    /// @{
    Value(const char* text) : content_(std::string(text)) {}
    Value(std::string_view text) : content_(std::string(text)) {}
    Value(std::string text) : content_(std::move(text)) {}
    /// @}
    /// A text, a list or a mapping; null for null. Lists and mappings are shared, not copied.
    /// @{
    Value(const NSString& text);
    Value(NSArray list);
    Value(NSDictionary mapping);
    /// @}

    /// Whether the value is null.
    bool is_null() const { return std::holds_alternative<std::monostate>(content_); }
    /// Whether the value is not null; true for false, 0 and empty content.
    explicit operator bool() const { return !is_null(); }
    /// The type of the value. Each number was stored either as an integer or as a double; is_number() also accepts a
    /// boolean.
    /// @{
    bool is_bool() const { return std::holds_alternative<bool>(content_); }
    bool is_integer() const { return std::holds_alternative<std::int64_t>(content_); }
    bool is_double() const { return std::holds_alternative<double>(content_); }
    bool is_number() const { return is_bool() || is_integer() || is_double(); }
    bool is_string() const { return std::holds_alternative<std::string>(content_); }
    bool is_array() const { return std::holds_alternative<NSArray>(content_); }
    bool is_dictionary() const { return std::holds_alternative<NSDictionary>(content_); }
    /// @}

    /// The text; null for any other type.
    NSString string() const;
    /// The text; empty for any other type.
    const std::string& text() const;
    /// The integer; 0 for any other type.
    std::int64_t integer() const { return is_integer() ? std::get<std::int64_t>(content_) : 0; }
    /// The list; null for any other type.
    NSArray array() const;
    /// The mapping; null for any other type.
    NSDictionary dictionary() const;
    /// The values of a list, or the entries of a mapping, without a handle to it: valid as long as the list, and until
    /// the mapping changes. Empty for any other type.
    /// @{
    std::span<const Value> values() const;
    std::span<const NSDictionary::Entry> entries() const;
    /// @}
    /// A number, or a text's leading number, truncated toward zero and clamped to 32 bits; 0 for any other type.
    std::int32_t intValue() const;
    /// As doubleValue, in single precision; values out of range become infinite.
    float floatValue() const;
    /// A number, 1 or 0 for a boolean, or a text's leading number; 0 for any other type.
    double doubleValue() const;
    /// True for a non-zero number, and for a text that begins with Y, y, T, t or a non-zero number.
    bool boolValue() const;
    /// A number as its shortest decimal text, a boolean as "1" or "0", a text unchanged; null for any other type.
    NSString stringValue() const;

    /// Structural equality; lists and mappings by content and order. Values of different types are never equal.
    friend bool operator==(const Value& a, const Value& b);

private:
    std::variant<std::monostate, bool, std::int64_t, double, std::string, NSArray, NSDictionary> content_;
};

/// An entry: a key and its value.
struct NSDictionary::Entry {
    std::string key; ///< Unique in its mapping.
    Value value;     ///< May be null.
};

/// Bytes, or null. Copies share them; static bytes are referenced, not copied.
class NSData
{
public:
    /// Null.
    /// @{
    NSData() = default;
    NSData(std::nullptr_t) {}
    /// @}
    /// Takes over the bytes; not null, even without bytes.
    explicit NSData(std::string bytes);
    /// References bytes with static storage duration (the compiled-in images).
    static NSData dataWithBytesNoCopy(const unsigned char* bytes, std::size_t length);

    /// False for null.
    explicit operator bool() const { return bytes_ != nullptr; }
    /// The first byte, valid as long as a copy of this object exists; null for null.
    const unsigned char* bytes() const { return bytes_; }
    /// Number of bytes; 0 for null.
    std::size_t length() const { return length_; }
    /// The bytes, valid as long as a copy of this object exists; empty for null.
    std::string_view view() const;

private:
    std::shared_ptr<const std::string> owner_;
    const unsigned char* bytes_ = nullptr;
    std::size_t length_ = 0;
};

/// An address, or null. It is parsed once, and copies share it.
class NSURL
{
public:
    /// Null.
    /// @{
    NSURL() = default;
    NSURL(std::nullptr_t) {}
    /// @}
    /// Creates an address; null for a null or empty text and for one with blanks, control characters or a malformed
    /// escape.
    static NSURL URLWithString(const NSString& text);
    /// The address of a file; null for a null path.
    static NSURL fileURLWithPath(const NSString& path);

    /// False for null.
    explicit operator bool() const { return content_ != nullptr; }
    /// Whether fileURLWithPath created the address.
    bool is_file() const;
    /// Whether the address begins with http:// or https://, in any letter case.
    bool is_web() const { return parts().is_web(); }
    /// The address as text, or the path of a file; null for a null address.
    const NSString& absoluteString() const;
    /// The parts of the address; those of the empty text for null and for a file's path. Valid while this address or a
    /// copy of it exists.
    const AddressParts& parts() const;

private:
    struct Content;
    explicit NSURL(std::shared_ptr<const Content> content) : content_(std::move(content)) {}

    std::shared_ptr<const Content> content_;
};

/// A description of an error, for the kit's delegates; its text is null when there is no error.
struct NSError {
    NSString text; ///< One line, or null.
};

/// Decodes percent escapes. Null for a null text, a malformed escape, or a result that is not valid UTF-8.
NSString stringByReplacingPercentEscapes(const NSString& text);

} // namespace qoro
