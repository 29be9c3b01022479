#pragma once

#include "platform/Export.h"
#include "platform/Value.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>

// The tables that describe an event's line in a trace: its name, and its fields in their order.

namespace QORO_EXPORT qoro
{

/// Text of an event: null, or a view that is valid during EventSink::receive only.
class EventText
{
public:
    /// Null.
    constexpr EventText(std::nullptr_t = nullptr) {}
    /// A view of a text, which must outlive it; not null, even when the text is empty.
    /// @{
    constexpr EventText(std::string_view text) : text_(text), present_(true) {}
    constexpr EventText(const char* text) : EventText(std::string_view(text)) {}
    EventText(const std::string& text) : EventText(std::string_view(text)) {}
    /// @}
    /// Null for null.
    EventText(const NSString& text)
    {
        if (text)
            *this = std::string_view(text.text());
    }

    /// False for null.
    constexpr explicit operator bool() const { return present_; }
    /// Empty for null.
    constexpr std::string_view view() const { return text_; }

private:
    std::string_view text_;
    bool present_ = false;
};

/// A field of an event's line.
struct Field {
    /// A Value is valid as long as the event.
    using Content = std::variant<std::nullptr_t, bool, std::int64_t, double, float, std::string_view, const Value*>;

    std::string_view key; ///< Name of the field.
    Content content;      ///< Its value; nullptr and a null Value are written as null.
};

/// A member of an event as the content of a field. An enumeration has an overload of its own.
/// @{
inline Field::Content field_content(const EventText& text)
{
    return text ? Field::Content(text.view()) : Field::Content(nullptr);
}
inline Field::Content field_content(bool flag)
{
    return flag;
}
inline Field::Content field_content(std::int64_t number)
{
    return number;
}
inline Field::Content field_content(double number)
{
    return number;
}
inline Field::Content field_content(float number)
{
    return number;
}
inline Field::Content field_content(const std::optional<std::int64_t>& number)
{
    return number ? Field::Content(*number) : Field::Content(nullptr);
}
inline Field::Content field_content(const Value* value)
{
    return value;
}
/// @}

namespace event
{

/// A field whose content is a member of the event.
template <typename Event, typename Member>
struct MemberField {
    std::string_view key;  ///< Name of the field.
    Member Event::*member; ///< The member of the event.

    /// Name of the field in the documentation.
    constexpr std::string_view documented() const { return key; }
    /// The field of an event.
    Field of(const Event& event) const { return {key, field_content(event.*member)}; }
};

/// A field whose name is a member of the event too.
template <typename Event>
struct KeyedField {
    /// Replaces the name in the documentation.
    std::string_view placeholder;
    EventText Event::*key;      ///< The member that holds the field's name.
    const Value* Event::*value; ///< The member that holds its content.

    /// Name of the field in the documentation.
    constexpr std::string_view documented() const { return placeholder; }
    /// The field of an event.
    Field of(const Event& event) const { return {(event.*key).view(), field_content(event.*value)}; }
};

/// The line of one type of event.
template <typename... Fields>
struct Table {
    /// Value of the line's "what"; empty for an event that is not written.
    std::string_view what;
    /// Value of the line's "do"; empty for a line without this field.
    std::string_view action;
    /// A MemberField or KeyedField for each field, in their order on the line.
    std::tuple<Fields...> fields;
};

/// A field whose content is a member of the event.
template <typename Event, typename Member>
constexpr MemberField<Event, Member> field(std::string_view key, Member Event::*member)
{
    return {key, member};
}

/// A field whose name is a member of the event too.
/// @param key the member that holds the field's name
/// @param value the member that holds its content
/// @param placeholder replaces the name in the documentation
template <typename Event>
constexpr KeyedField<Event> field_named_by(EventText Event::*key, const Value* Event::*value,
                                           std::string_view placeholder)
{
    return {placeholder, key, value};
}

/// A line without "do".
template <typename... Fields>
constexpr Table<Fields...> line(std::string_view what, Fields... fields)
{
    return {what, {}, {fields...}};
}

/// A line with "do", its first field.
template <typename... Fields>
constexpr Table<Fields...> action_line(std::string_view what, std::string_view action, Fields... fields)
{
    return {what, action, {fields...}};
}

/// An event that a trace does not contain.
constexpr Table<> unwritten()
{
    return {};
}

/// The fields of an event's line, in their order.
template <typename Event>
auto fields_of(const Event& event)
{
    return std::apply(
        [&event](const auto&... fields) {
            if constexpr (Event::table.action.empty())
                return std::array<Field, sizeof...(fields)>{fields.of(event)...};
            else
                return std::array<Field, sizeof...(fields) + 1>{Field{"do", Event::table.action}, fields.of(event)...};
        },
        Event::table.fields);
}

} // namespace event

} // namespace qoro
