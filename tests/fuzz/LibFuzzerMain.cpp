#include "tests/fuzz/FuzzTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qoro::fuzz::run_input({reinterpret_cast<const char*>(data), size});
    return 0;
}
