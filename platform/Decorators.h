#pragma once

#include "platform/Ports.h"

namespace qoro
{

/// A player that passes on to another one, of the platform's own class.
class PlayerDecorator : public PlayerEngine
{
public:
    virtual PlayerEngine* decorated() const = 0;
};

/// A web engine that passes on to another one, of the platform's own class.
class WebDecorator : public WebEngine
{
public:
    virtual WebEngine* decorated() const = 0;
};

/// The platform's own player or web engine; null for null.
/// @{
inline PlayerEngine* undecorated(PlayerEngine* player)
{
    const auto* decorator = dynamic_cast<PlayerDecorator*>(player);
    return decorator ? decorator->decorated() : player;
}
inline WebEngine* undecorated(WebEngine* page)
{
    const auto* decorator = dynamic_cast<WebDecorator*>(page);
    return decorator ? decorator->decorated() : page;
}
/// @}

} // namespace qoro
