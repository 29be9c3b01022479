#pragma once

#include "vast/Macros.h"

// The table of macros.

namespace qoro::vast
{

/// The expansion of one address.
struct Expansion {
    std::string& out;
    const MacroValues& values;
    /// Absent until it is needed.
    std::optional<std::uint32_t> cache_buster = {};
};

/// The kinds of addresses in which a macro has a value, as the column "Contexts" of the standard's list.
enum class Where { Everywhere, Documents, Trackers, Clicks, Errors, NotVerified };

/// A row of the table.
struct Macro {
    std::string_view name;
    Where where;
    /// Appends the value, or returns false and appends nothing when it is absent.
    bool (*append)(Expansion& expansion);
    /// Identifies the viewer.
    bool of_viewer = false;
};

constexpr bool is_macro_character(char c)
{
    return c >= 'A' && c <= 'Z';
}

/// @return null if no macro has the name
const Macro* find_macro(std::string_view name);

} // namespace qoro::vast
