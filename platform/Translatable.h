#pragma once

namespace qoro
{

// A text of the system's own is marked where it stands, and translated where it is shown (Platform::translation).
// xgettext finds the marks by these names (tools/check_translations.sh).

/// Marks a text.
constexpr const char* translatable(const char* text)
{
    return text;
}

/// A text that depends on a number, which it names as "%d".
struct CountedText {
    /// For 1.
    const char* one;
    /// For any other number; a language may have further forms.
    const char* many;
};

/// Marks both forms of a text that depends on a number.
constexpr CountedText translatable_count(const char* one, const char* many)
{
    return {one, many};
}

} // namespace qoro
