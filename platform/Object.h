#pragma once

#include <memory>

namespace qoro
{

/// What the kit hands around by reference: controllers, delegates, the ad description. Always held by a
/// std::shared_ptr, so that timers and requests can keep their target; main thread only.
class Object : public std::enable_shared_from_this<Object>
{
public:
    Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    virtual ~Object() = default;
};

} // namespace qoro
