#include "desktop/web/WebKitFunctions.h"

#include <dlfcn.h>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace qoro
{

namespace
{

/// The name under which every 6.0 version of the interface is installed.
constexpr const char* LibraryName = "libwebkitgtk-6.0.so.4";

struct Library {
    void* handle = nullptr;
    /// Why it is not loaded; empty if it is.
    std::string complaint;

    Library() : handle(dlopen(LibraryName, RTLD_LAZY | RTLD_LOCAL))
    {
        if (!handle)
            complaint = dlerror();
    }
};

const Library& library()
{
    static const Library loaded;
    return loaded;
}

} // namespace

const std::string& load_webkit()
{
    return library().complaint;
}

bool loads_webkit_beside()
{
    static std::atomic<bool> known = false;
    static std::once_flag once;
    std::call_once(once, [] {
        const auto load = [] {
            library();
            known = true;
        };
        try {
            std::thread(load).detach();
        } catch (const std::system_error&) {
            load();
        }
    });
    return known;
}

void* webkit_function(const char* name)
{
    if (const std::string& complaint = load_webkit(); !complaint.empty())
        throw std::runtime_error(complaint);
    void* const address = dlsym(library().handle, name);
    if (!address)
        throw std::runtime_error(std::string(LibraryName) + " has no function " + name);
    return address;
}

} // namespace qoro
