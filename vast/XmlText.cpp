#include "vast/XmlText.h"

#include "vast/DocumentPlace.h"

#include "vast/Texts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>

namespace qoro::vast
{

namespace
{

using Node = pugi::xml_node;

/// Up to here, counting siblings is faster than a table.
constexpr int LargeDocument = 500;

/// Bytes of a code unit, and their order.
struct Encoding {
    std::size_t unit = 1;
    bool big = false;
    /// Of single bytes: each is a character.
    bool latin = false;
};

Encoding encoding_of(std::string_view bytes)
{
    using namespace std::string_view_literals;
    struct Mark {
        std::string_view bytes;
        Encoding encoding;
    };
    // Byte order marks, then how the first "<" looks (XML 1.0, appendix F).
    constexpr std::array<Mark, 8> Marks{{{"\xff\xfe\0\0"sv, {4, false, false}},
                                         {"\0\0\xfe\xff"sv, {4, true, false}},
                                         {"<\0\0\0"sv, {4, false, false}},
                                         {"\0\0\0<"sv, {4, true, false}},
                                         {"\xff\xfe"sv, {2, false, false}},
                                         {"\xfe\xff"sv, {2, true, false}},
                                         {"<\0"sv, {2, false, false}},
                                         {"\0<"sv, {2, true, false}}}};
    for (const Mark& mark : Marks)
        if (bytes.starts_with(mark.bytes))
            return mark.encoding;
    const std::string declaration = lower(bytes.substr(0, std::min<std::size_t>(bytes.find("?>"), 200)));
    return {1, false,
            declaration.find("iso-8859-1") != std::string::npos || declaration.find("latin1") != std::string::npos};
}

std::uint32_t unit_at(std::string_view bytes, std::size_t place, const Encoding& encoding)
{
    std::uint32_t unit = 0;
    for (std::size_t n = 0; n < encoding.unit; ++n) {
        const std::size_t index = encoding.big ? n : encoding.unit - 1 - n;
        unit = (unit << 8U) | static_cast<unsigned char>(bytes[place + index]);
    }
    return unit;
}

/// Bytes that a code unit of the text has in UTF-8.
std::size_t length_in_utf8(std::uint32_t unit, const Encoding& encoding)
{
    if (encoding.unit == 1)
        return encoding.latin && unit >= 0x80 ? 2 : 1;
    if (unit < 0x80)
        return 1;
    if (unit < 0x800)
        return 2;
    if (encoding.unit == 2 && unit >= 0xd800 && unit < 0xe000)
        return 2; // half of a pair
    return unit < 0x10000 ? 3 : 4;
}

/// Line and column, from 1; columns are characters.
/// @param offset in bytes from the beginning of the text, once it is in UTF-8
DocumentPlace place_at(std::string_view bytes, std::ptrdiff_t offset)
{
    const Encoding encoding = encoding_of(bytes);
    const auto end = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
    std::size_t line = 1;
    std::size_t column = 1;
    std::size_t before = 0;
    for (std::size_t place = 0; place + encoding.unit <= bytes.size() && before < end; place += encoding.unit) {
        const std::uint32_t unit = unit_at(bytes, place, encoding);
        before += length_in_utf8(unit, encoding);
        const bool continues = encoding.unit == 1 ? !encoding.latin && (unit & 0xc0U) == 0x80
                                                  : encoding.unit == 2 && unit >= 0xdc00 && unit < 0xe000;
        const bool is_mark = unit == 0xfeff || (place == 0 && bytes.starts_with("\xef\xbb\xbf"));
        if (unit == '\n') {
            ++line;
            column = 1;
        } else if (!continues && !is_mark)
            ++column;
    }
    return {.line = line, .column = column};
}

std::string place_of(std::string_view bytes, std::ptrdiff_t offset)
{
    const DocumentPlace place = place_at(bytes, offset);
    return "line " + std::to_string(place.line) + ", column " + std::to_string(place.column);
}

/// Moves to the next node in document order, without recursion.
/// @param depth of the node; the document's is 0
/// @return whether there is one
bool advance(Node& node, int& depth)
{
    if (const Node child = node.first_child()) {
        node = child;
        ++depth;
        return true;
    }
    for (; depth > 0; --depth) {
        if (const Node next = node.next_sibling()) {
            node = next;
            return true;
        }
        node = node.parent();
    }
    return false;
}

/// @return the number of elements
int require_within(const pugi::xml_document& xml, std::string_view bytes, const DocumentLimits& limits)
{
    int elements = 0;
    int depth = 0;
    Node node = xml;
    const auto refuse = [&](const std::string& what) {
        throw DocumentError(100, place_of(bytes, node.offset_debug()) + ": " + what);
    };
    while (advance(node, depth)) {
        if (!is_element(node))
            continue;
        if (++elements > limits.elements)
            refuse("the document has more than " + std::to_string(limits.elements) + " elements");
        if (depth > limits.depth)
            refuse("the document has more than " + std::to_string(limits.depth) + " levels of elements");
    }
    return elements;
}

} // namespace

int parse_xml(pugi::xml_document& xml, std::string_view bytes, const DocumentLimits& limits)
{
    if (bytes.size() > limits.bytes)
        throw DocumentError(100, "byte " + std::to_string(limits.bytes + 1) + ": the document is larger than " +
                                     std::to_string(limits.bytes) + " bytes");
    const pugi::xml_parse_result parsed = xml.load_buffer(bytes.data(), bytes.size());
    if (parsed.status == pugi::status_no_document_element)
        throw DocumentError(100, "line 1, column 1: not XML: expected the element VAST, got no element");
    if (!parsed)
        throw DocumentError(100, place_of(bytes, parsed.offset) + ": not XML: " + parsed.description());
    return require_within(xml, bytes, limits);
}

bool is_element(const Node& node)
{
    return node.type() == pugi::node_element;
}

std::string_view name_of(const Node& node)
{
    const std::string_view name = node.name();
    return name.substr(name.find(':') + 1);
}

std::string text_of(const Node& node)
{
    const auto is_text = [](const Node& child) {
        return child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata;
    };
    const Node first = node.first_child();
    if (!first.next_sibling())
        return std::string(is_text(first) ? trimmed(first.value()) : std::string_view());
    std::string text;
    for (const Node& child : node.children())
        if (is_text(child))
            text += child.value();
    return std::string(trimmed(text));
}

std::string attribute(const Node& node, const char* name)
{
    return std::string(trimmed(node.attribute(name).value()));
}

bool has_attribute(const Node& node, const char* name)
{
    return static_cast<bool>(node.attribute(name));
}

Paths::Paths(const pugi::xml_document& xml, int elements) : large_(elements > LargeDocument)
{
    if (!large_)
        return;
    positions_.reserve(static_cast<std::size_t>(elements));
    Node node = xml;
    int depth = 0;
    do
        number_children(node);
    while (advance(node, depth));
}

void Paths::number_children(const Node& parent)
{
    std::map<std::string_view, std::size_t> counts;
    for (const Node& child : parent.children())
        if (is_element(child))
            positions_[child.internal_object()] = ++counts[name_of(child)];
    for (const Node& child : parent.children())
        if (is_element(child) && counts[name_of(child)] == 1)
            positions_[child.internal_object()] = 0;
}

std::size_t Paths::position_of(const Node& node) const
{
    if (large_) {
        const auto found = positions_.find(node.internal_object());
        return found == positions_.end() ? 0 : found->second;
    }
    const auto is_alike = [name = name_of(node)](const Node& other) {
        return is_element(other) && name_of(other) == name;
    };
    std::size_t before = 0;
    for (Node each = node.previous_sibling(); each; each = each.previous_sibling())
        before += is_alike(each) ? 1 : 0;
    if (before > 0)
        return before + 1;
    for (Node each = node.next_sibling(); each; each = each.next_sibling())
        if (is_alike(each))
            return 1;
    return 0;
}

std::string Paths::of(const Node& node) const
{
    if (!is_element(node))
        return {};
    if (const Node parent = node.parent(); parent != parent_) {
        parent_path_ = of(parent);
        parent_ = parent;
    }
    const std::string_view name = name_of(node);
    std::string path;
    path.reserve(parent_path_.size() + name.size() + 1);
    path += parent_path_;
    path += '/';
    path += name;
    if (const std::size_t position = position_of(node); position != 0)
        path += "[" + std::to_string(position) + "]";
    return path;
}

std::optional<DocumentPlace> place_in_document(std::string_view bytes, const std::string& path)
{
    pugi::xml_document xml;
    int elements = 0;
    try {
        elements = parse_xml(xml, bytes, {});
    } catch (const DocumentError&) {
        return std::nullopt;
    }
    const std::string element = path.substr(0, path.find("/@"));
    const Paths paths(xml, elements);
    std::optional<DocumentPlace> found;
    Node node = xml;
    for (int depth = 0; advance(node, depth);) {
        if (!is_element(node))
            continue;
        if (name_of(node) == "Wrapper")
            return std::nullopt;
        if (!found && paths.of(node) == element)
            found = place_at(bytes, node.offset_debug());
    }
    return found;
}

} // namespace qoro::vast
