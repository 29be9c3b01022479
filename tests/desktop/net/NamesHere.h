#pragma once

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
    NamesHere(const NamesHere&) = delete;
    NamesHere& operator=(const NamesHere&) = delete;

private:
    GResolver* const before_;
};

} // namespace qoro::test
