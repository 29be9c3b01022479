#pragma once

#include "views/ViewNode.h"

#include <type_traits>

namespace qoro
{

/// What a handle reads of its node; zero for a null handle.
template <typename T>
T read(const std::shared_ptr<ViewNode>& node, T ViewNode::*member)
{
    return node ? (*node).*member : T();
}

/// What a handle sets in its node: nothing for a null handle, and an equal value is no change.
template <typename T>
void assign(const std::shared_ptr<ViewNode>& node, T ViewNode::*member, const std::type_identity_t<T>& value)
{
    if (!node || (*node).*member == value)
        return;
    (*node).*member = value;
    node->changed();
}

} // namespace qoro
