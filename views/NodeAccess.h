#pragma once

#include "views/ViewNode.h"

#include <type_traits>

namespace qoro
{

/// Reads a node's member; a value-initialised T for a null node.
template <typename T>
T read(const std::shared_ptr<ViewNode>& node, T ViewNode::*member)
{
    return node ? (*node).*member : T();
}

/// Sets a node's member and reports the change. No effect for a null node or an equal value.
template <typename T>
void assign(const std::shared_ptr<ViewNode>& node, T ViewNode::*member, const std::type_identity_t<T>& value)
{
    if (!node || (*node).*member == value)
        return;
    (*node).*member = value;
    node->changed();
}

} // namespace qoro
