#include "simulator/SimulatedNet.h"

#include "simulator/VirtualLoop.h"

#include <utility>

namespace qoro
{

namespace
{

const NetAnswer& find(const World& world, const std::string& address)
{
    static const NetAnswer unnamed;
    const auto named = world.net.find(address);
    return named == world.net.end() ? unnamed : named->second;
}

} // namespace

void SimulatedNet::fetch(const std::string& address, FetchKind, std::function<void(FetchAnswer)> answer)
{
    const NetAnswer& named = find(world_, address);
    ++pending_;
    loop_.after(to_microseconds(named.after), [this, answer = std::move(answer), address, &named] {
        --pending_;
        answer({named.ok, named.error, named.body, address});
    });
}

FetchAnswer SimulatedNet::fetch_now(const std::string& address)
{
    const NetAnswer& named = find(world_, address);
    blocked_seconds_ += named.after;
    return {named.ok, named.error, named.body, address};
}

NSString SimulatedVideoCache::path_for(const NSString& address)
{
    if (!address)
        return nullptr;
    const auto copy = world_.cached.find(address.text());
    return copy == world_.cached.end() ? NSString() : NSString(copy->second);
}

} // namespace qoro
