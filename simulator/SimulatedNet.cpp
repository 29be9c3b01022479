#include "simulator/SimulatedNet.h"

#include "simulator/VirtualLoop.h"

#include <utility>

namespace qoro
{

SimulatedNet::SimulatedNet(VirtualLoop& loop, const World& world) : loop_(loop), world_(world)
{
    for (const auto& [address, answer] : world.net)
        if (auto pattern = AddressPattern::of_document(address); pattern.has_macros())
            patterns_.emplace_back(std::move(pattern), &answer);
}

const NetAnswer& SimulatedNet::find(const std::string& address) const
{
    static const NetAnswer unnamed;
    if (const auto named = world_.net.find(address); named != world_.net.end())
        return named->second;
    for (const auto& [pattern, answer] : patterns_)
        if (pattern.matches(address))
            return *answer;
    return unnamed;
}

void SimulatedNet::fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer)
{
    const NetAnswer& named = find(address);
    ++pending_;
    loop_.after(to_microseconds(named.after), Due{this, address, kind, &named, std::move(answer)});
}

void SimulatedNet::Due::operator()() const
{
    --net->pending_;
    answer({named->ok, named->error, named->body, address});
}

FetchAnswer SimulatedNet::fetch_now(const std::string& address)
{
    const NetAnswer& named = find(address);
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
