#pragma once

#include "platform/Export.h"

namespace QORO_EXPORT qoro
{

// Translatable texts are marked where they are defined and translated where they are shown (Platform::translation).
// xgettext extracts the marks by these names (tools/check_translations.sh).

/// Marks a text for extraction.
constexpr const char* translatable(const char* text)
{
    return text;
}

/// A text with plural forms that contains the number as "%d".
struct CountedText {
    /// Singular, for 1.
    const char* one;
    /// Plural, for any other number. A translation may have more forms.
    const char* many;
};

/// Marks both plural forms of a text for extraction.
constexpr CountedText translatable_count(const char* one, const char* many)
{
    return {one, many};
}

} // namespace qoro
