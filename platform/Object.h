#pragma once

#include <memory>

namespace qoro
{

/// Base of everything passed by reference: controllers, delegates, the ad description. Always owned by a
/// std::shared_ptr, so that timers and requests can retain their target. Main thread only.
class Object : public std::enable_shared_from_this<Object>
{
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;
};

} // namespace qoro
