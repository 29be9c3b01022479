#pragma once

#include "kit/NetworkZone.h"

#include <string>
#include <vector>

typedef struct _GSocketAddress GSocketAddress;

namespace qoro
{

// How far inside requests go. Addresses are checked as connections are made, so that a name which leads inside is
// found out, whatever it led to before. Any thread.

/// In force for the whole program as long as it lives, one at a time: what a public ad names lies outside. Without one
/// every address can be reached, as for a program that fetches what its user names.
class ReachRule
{
public:
    /// @param open the innermost zone that everything reaches
    explicit ReachRule(NetworkZone open);
    ~ReachRule();
    ReachRule(const ReachRule&) = delete;
    ReachRule& operator=(const ReachRule&) = delete;
};

/// As long as it lives, requests to these hosts may go as far inside as they lead: an ad of this machine names them
/// itself. A host counts with its port.
class NamedHosts
{
public:
    /// @param addresses those that are none of http or https are passed over
    explicit NamedHosts(const std::vector<std::string>& addresses);
    ~NamedHosts();
    NamedHosts(const NamedHosts&) = delete;
    NamedHosts& operator=(const NamedHosts&) = delete;

private:
    std::vector<std::string> hosts_;
};

/// The innermost zone that a request for an address may go to.
NetworkZone reach_of(const std::string& address);
/// The innermost zone that everything may go to.
NetworkZone open_zone();
/// Whether a rule is in force.
bool has_reach_rule();

/// A page has come.
/// @param zone of the server that sent it
void note_page(const std::string& address, NetworkZone zone);
/// The innermost zone that a page may go to, which has come from an address: its own, unless everything may go further.
NetworkZone reach_of_page(const std::string& address);

/// The zone of what a socket leads to; public for what is no IP address.
NetworkZone zone_of(GSocketAddress* address);
/// "192.168.1.7:80"
std::string text_of(GSocketAddress* address);

} // namespace qoro
