#include "tests/support/Allocations.h"

#include <atomic>

#ifdef __SANITIZE_ADDRESS__
// GCC installs no header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*on_malloc)(const volatile void*, std::size_t),
                                                         void (*on_free)(const volatile void*));
#else
#include <cstdlib>
#include <new>
#endif

namespace
{
std::atomic<std::size_t> count{0};
} // namespace

#ifdef __SANITIZE_ADDRESS__

// AddressSanitizer's own allocator stays in place, with all its checks.
namespace
{
const int installed = __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { ++count; },
                                                                [](const volatile void*) {});
} // namespace

#else

void* operator new(std::size_t size)
{
    ++count;
    if (void* memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

#endif

std::size_t qoro::test::allocations_so_far()
{
    return count;
}
