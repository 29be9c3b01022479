#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qoro::vast
{

/// A place in a document's text; both from 1, columns in characters.
struct DocumentPlace {
    std::size_t line = 0;
    std::size_t column = 0;
};

/// Where a document has an element.
/// @param path XPath as the reader of documents writes it, also one of an attribute
/// @return the name of the element; absent if the text has none of this path, is not XML, or leads to other documents,
///         to which the path may belong
std::optional<DocumentPlace> place_in_document(std::string_view bytes, const std::string& path);

} // namespace qoro::vast
