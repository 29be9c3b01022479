#pragma once

#include <string>
#include <vector>

typedef struct _GResolver GResolver;

namespace qoro::test
{

/// While it lives, every name under .example leads to this machine, in this program: servers here can be asked as if
/// they stood elsewhere. No other name is found.
class NamesHere
{
public:
    NamesHere();
    ~NamesHere();
    /// One name leads to these IPv4 addresses instead, from the next request on.
    void lead(const std::string& name, const std::vector<std::string>& addresses);
    NamesHere(const NamesHere&) = delete;
    NamesHere& operator=(const NamesHere&) = delete;

private:
    GResolver* const before_;
};

} // namespace qoro::test
