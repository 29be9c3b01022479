#pragma once

#include <memory>

namespace qoro
{

/// The reference that others hold an object by, to hand the object around from inside it.
template <typename T>
std::shared_ptr<T> sharedFrom(T* object)
{
    return std::static_pointer_cast<T>(object->shared_from_this());
}

} // namespace qoro
