#pragma once

#include "vast/Model.h"
#include "vast/Texts.h"
#include "vast/XmlText.h"

#include <pugixml.hpp>

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro::vast
{

using Node = pugi::xml_node;

/// What has no effect, noted as it is found.
class Notes
{
public:
    Notes(const Paths& paths, std::vector<Ignored>& list) : paths_(paths), list_(list) {}

    void add(const Node& node, const std::string& why) const { add(node, std::string(name_of(node)), why); }
    /// About an attribute of an element.
    void add(const Node& node, const std::string& name, const std::string& why) const
    {
        list_.push_back({name, why, paths_.of(node)});
    }

private:
    const Paths& paths_;
    std::vector<Ignored>& list_;
};

/// How the children of an element of one name are read.
struct Child {
    std::string_view name;
    std::function<void(const Node&)> read;
};

/// Children that the standard defines and that have no effect here, and why.
struct Unsupported {
    std::string_view name;
    std::string_view why;
};

/// A child by its name without prefix; null without one.
Node child_of(const Node& parent, std::string_view name);
bool has_child(const Node& parent, std::string_view name);

/// What the readers of a document's elements have in common.
class ElementReader
{
public:
    /// Both outlive it.
    ElementReader(const Paths& paths, std::vector<Ignored>& notes) : paths_(paths), notes_(paths, notes) {}

protected:
    ~ElementReader() = default;
    ElementReader(const ElementReader&) = default;
    ElementReader& operator=(const ElementReader&) = delete;

    /// Reads each child by its name. Others are noted.
    void visit(const Node& parent, std::initializer_list<Child> children,
               std::initializer_list<Unsupported> unsupported = {}) const;
    Child address(std::string_view name, std::string& place) const;
    Child addresses(std::string_view name, std::vector<std::string>& place) const;
    Child text(std::string_view name, std::string& place) const;
    Child resource(std::string_view name, Resource::Kind kind, std::vector<Resource>& place) const;
    /// The address in an element; empty when there is none, which is noted.
    std::string address_in(const Node& node) const;
    /// An attribute, read by one of the functions of Texts.h; absent when missing, and, with a note, when malformed.
    template <typename Result>
    std::optional<Result> value(const Node& node, const char* name, std::optional<Result> (*parse)(std::string_view),
                                std::string_view expected) const;
    /// Notes a child that is missing.
    void require(const Node& parent, const char* name) const;
    /// Notes what has no effect.
    /// @{
    void note(const Node& node, const std::string& why) const { notes_.add(node, why); }
    void note(const Node& node, const std::string& name, const std::string& why) const { notes_.add(node, name, why); }
    /// @}
    std::string path_of(const Node& node) const { return paths_.of(node); }
    const Paths& paths() const { return paths_; }

private:
    const Paths& paths_;
    Notes notes_;
};

template <typename Result>
std::optional<Result> ElementReader::value(const Node& node, const char* name,
                                           std::optional<Result> (*parse)(std::string_view),
                                           std::string_view expected) const
{
    const pugi::xml_attribute given = node.attribute(name);
    if (!given)
        return std::nullopt;
    const std::string_view text = trimmed(given.value());
    const std::optional<Result> result = parse(text);
    if (!result)
        notes_.add(node, std::string(name), "\"" + std::string(text.substr(0, 80)) + "\" " + std::string(expected));
    return result;
}

} // namespace qoro::vast
