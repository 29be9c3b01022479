#pragma once

#include <memory>

namespace qoro
{

/// A typed shared_from_this(). Throws std::bad_weak_ptr for an object that no shared_ptr owns.
template <typename T>
std::shared_ptr<T> sharedFrom(T* object)
{
    return std::static_pointer_cast<T>(object->shared_from_this());
}

} // namespace qoro
