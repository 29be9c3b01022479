#pragma once

#include "platform/Export.h"
#include "vast/Model.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace QORO_EXPORT qoro
{

namespace vast
{

/// Limits of a document; a document beyond one of them is refused.
struct DocumentLimits {
    /// Length of the text.
    std::size_t bytes = std::size_t{5} << 20U;
    /// Levels of elements.
    int depth = 64;
    /// Number of elements, the root included.
    int elements = 10000;
};

/// A text is no VAST document that can be used. The text is one line: the place (line and column, or the XPath) and
/// what was expected.
struct DocumentError : std::runtime_error {
    /// @param vast_code see code
    /// @param line the text
    DocumentError(int vast_code, const std::string& line) : std::runtime_error(line), code(vast_code) {}
    /// The standard's code (VAST 4.3, section 2.3.6): 100 not XML, 101 not VAST, 102 a version that is not supported.
    int code;
};

/// Reads a VAST document of version 2.0 to 4.3, in UTF-8, UTF-16, UTF-32 or ISO 8859-1, with or without a namespace. A
/// document type declaration and its entities have no effect. What is missing or malformed and is not needed to play an
/// ad is listed in Document::ignored or Ad::ignored.
/// @throws DocumentError
Document read_document(std::string_view bytes, const DocumentLimits& limits = {});

} // namespace vast

} // namespace qoro
