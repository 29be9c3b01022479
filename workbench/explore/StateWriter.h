#pragma once

#include "platform/Geometry.h"
#include "platform/Ports.h"
#include "platform/UIKit.h"
#include "platform/Value.h"
#include "workbench/explore/StateHash.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace qoro
{

/// Collects the parts of a state as a key, and as text where one is wanted. Every list is preceded by its length, so
/// that different states do not give the same sequence.
class StateWriter
{
public:
    /// @param leave_out name of the part that is ignored; empty: none
    /// @param text receives a line for each part; may be null. Outlives the writer
    explicit StateWriter(std::string_view leave_out = {}, std::string* text = nullptr)
        : leave_out_(leave_out), text_(text)
    {
    }

    template <typename Number>
    requires std::is_arithmetic_v<Number> || std::is_enum_v<Number>
    void add(std::string_view name, Number number)
    {
        if constexpr (std::is_enum_v<Number>)
            add(name, static_cast<std::int64_t>(number));
        else if constexpr (std::is_floating_point_v<Number>)
            add_number(name, std::bit_cast<std::uint64_t>(static_cast<double>(number)), static_cast<double>(number));
        else
            add_number(name, static_cast<std::uint64_t>(number), static_cast<double>(number));
    }
    void add(std::string_view name, std::string_view text);
    void add(std::string_view name, const NSString& text);
    void add(std::string_view name, const NSURL& address) { add(name, address.absoluteString()); }
    void add(std::string_view name, const NSArray& list) { add(name, Value(list)); }
    void add(std::string_view name, const NSDictionary& mapping) { add(name, Value(mapping)); }
    void add(std::string_view name, const Value& value);
    void add(std::string_view name, CGSize size);
    void add(std::string_view name, CGPoint point);
    void add(std::string_view name, const CGRect& rect);
    void add(std::string_view name, const UIColor& color);
    template <typename T>
    void add(std::string_view name, const std::optional<T>& value)
    {
        add(name, value.has_value());
        if (value)
            add(name, *value);
    }

    StateKey key() const;

private:
    void add_number(std::string_view name, std::uint64_t bits, double shown);
    bool ignores(std::string_view name) const { return !leave_out_.empty() && name == leave_out_; }
    void mix(std::uint64_t bits);
    void mix(std::string_view bytes);

    const std::string_view leave_out_;
    std::string* const text_;
    std::uint64_t first_ = 0x243F6A8885A308D3;
    std::uint64_t second_ = 0x13198A2E03707344;
};

} // namespace qoro
