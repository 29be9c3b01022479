#pragma once

#include <string>
#include <vector>

typedef struct _GResolver GResolver;

namespace qoro::test
{

/// Replaces the process's default resolver for its lifetime: every name under .example (RFC 2606) resolves to loopback,
/// so that local servers can have host names. Other names do not resolve.
class NamesHere
{
public:
    NamesHere();
    ~NamesHere();
    /// Resolves one name to these IPv4 addresses instead, from the next lookup on.
    void lead(const std::string& name, const std::vector<std::string>& addresses);
    NamesHere(const NamesHere&) = delete;
    NamesHere& operator=(const NamesHere&) = delete;

private:
    GResolver* const before_;
};

} // namespace qoro::test
