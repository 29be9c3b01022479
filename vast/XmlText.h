#pragma once

#include "vast/Reader.h"

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

// The text of a document as a tree of XML, and names and places in it. Names have no prefix of a namespace.

namespace qoro::vast
{

/// Parses a text.
/// @return the number of its elements
/// @throws DocumentError for a text that is not XML, has no element, or is beyond a limit
int parse_xml(pugi::xml_document& xml, std::string_view bytes, const DocumentLimits& limits);

bool is_element(const pugi::xml_node& node);
std::string_view name_of(const pugi::xml_node& node);
/// Text and CDATA of an element itself, without surrounding blanks.
std::string text_of(const pugi::xml_node& node);
/// An attribute's value without surrounding blanks; empty when it is absent.
std::string attribute(const pugi::xml_node& node, const char* name);
bool has_attribute(const pugi::xml_node& node, const char* name);

/// XPaths of a document's elements. The document outlives it and does not change. For one thread.
class Paths
{
public:
    /// @param elements how many the document has
    Paths(const pugi::xml_document& xml, int elements);
    /// An element among others of its name has its position, from 1.
    std::string of(const pugi::xml_node& node) const;

private:
    /// From 1; 0 for the only one of its name.
    std::size_t position_of(const pugi::xml_node& node) const;
    void number_children(const pugi::xml_node& parent);

    /// Of a large document, where counting siblings each time would take the square of their number. By node.
    std::unordered_map<const void*, std::size_t> positions_;
    bool large_ = false;
    /// The last parent that was asked for, and its path: neighbours are asked for one after the other.
    /// @{
    mutable pugi::xml_node parent_;
    mutable std::string parent_path_;
    /// @}
};

} // namespace qoro::vast
