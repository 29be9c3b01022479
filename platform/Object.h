#pragma once

#include "platform/Export.h"

#include <memory>

/// Video ads: the controller, its kit, and the platforms that it runs on. A platform and its objects belong to one
/// thread, its main thread, and are used on it only, unless stated otherwise.
namespace QORO_EXPORT qoro
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
