#include "simulator/SimulatedNet.h"

#include "simulator/VirtualLoop.h"

#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

constexpr std::string_view EveryServer = "*";

bool is_of_server(std::string_view address, std::string_view server)
{
    if (!address.starts_with(server))
        return false;
    const std::string_view rest = address.substr(server.size());
    return rest.empty() || rest.find_first_of("/?#") == 0;
}

} // namespace

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
    answer(net->answer_of(*named, address));
}

FetchAnswer SimulatedNet::fetch_now(const std::string& address)
{
    const NetAnswer& named = find(address);
    blocked_seconds_ += named.after;
    return answer_of(named, address);
}

void SimulatedNet::change_server(const std::string& server, const std::optional<std::string>& failure)
{
    if (failure)
        failing_.insert_or_assign(server, *failure);
    else if (server == EveryServer)
        failing_.clear();
    else
        failing_.erase(server);
}

FetchAnswer SimulatedNet::answer_of(const NetAnswer& named, const std::string& address) const
{
    for (const auto& [server, failure] : failing_)
        if (server == EveryServer || is_of_server(address, server))
            return {false, failure, "", address};
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
