#include "tests/fuzz/FuzzTarget.h"

#include <cstdlib>
#include <iostream>

void qoro::fuzz::require(bool kept, std::string_view promise)
{
    if (kept)
        return;
    std::cerr << "broken promise: " << promise << std::endl;
    std::abort();
}
