#include "vast/ElementReader.h"

#include <algorithm>
#include <utility>

namespace qoro::vast
{

Node child_of(const Node& parent, std::string_view name)
{
    return parent.find_child([name](const Node& child) { return is_element(child) && name_of(child) == name; });
}

bool has_child(const Node& parent, std::string_view name)
{
    return static_cast<bool>(child_of(parent, name));
}

void ElementReader::visit(const Node& parent, std::initializer_list<Child> children,
                          std::initializer_list<Unsupported> unsupported) const
{
    for (const Node& node : parent.children()) {
        if (!is_element(node))
            continue;
        const std::string_view name = name_of(node);
        if (const auto* const child = std::ranges::find(children, name, &Child::name); child != children.end())
            child->read(node);
        else if (const auto* const known = std::ranges::find(unsupported, name, &Unsupported::name);
                 known != unsupported.end())
            notes_.add(node, std::string(known->why));
        else
            notes_.add(node, "unknown element");
    }
}

std::string ElementReader::address_in(const Node& node) const
{
    std::string address = text_of(node);
    if (address.empty())
        notes_.add(node, "is empty");
    else if (!is_address(address)) {
        notes_.add(node, "is no http or https address");
        address.clear();
    } else if (has_blanks(address))
        notes_.add(node, "has blanks, which are requested percent-encoded");
    return address;
}

Child ElementReader::address(std::string_view name, std::string& place) const
{
    return {name, [this, &place](const Node& node) {
                const std::string address = address_in(node);
                if (address.empty())
                    return;
                if (place.empty())
                    place = address;
                else
                    notes_.add(node, "only the first counts");
            }};
}

Child ElementReader::addresses(std::string_view name, std::vector<std::string>& place) const
{
    return {name, [this, &place](const Node& node) {
                if (std::string address = address_in(node); !address.empty())
                    place.push_back(std::move(address));
            }};
}

Child ElementReader::text(std::string_view name, std::string& place) const
{
    return {name, [this, &place](const Node& node) {
                if (place.empty())
                    place = text_of(node);
                else
                    notes_.add(node, "only the first counts");
            }};
}

Child ElementReader::resource(std::string_view name, Resource::Kind kind, std::vector<Resource>& place) const
{
    return {name, [this, kind, &place](const Node& node) {
                Resource resource{kind, kind == Resource::Kind::Html ? text_of(node) : address_in(node),
                                  attribute(node, "creativeType")};
                if (!resource.text.empty())
                    place.push_back(std::move(resource));
                else if (kind == Resource::Kind::Html)
                    notes_.add(node, "is empty");
            }};
}

void ElementReader::require(const Node& parent, const char* name) const
{
    if (!has_child(parent, name))
        notes_.add(parent, name, "is missing");
}

} // namespace qoro::vast
