#include "desktop/media/LibavLibrary.h"

#include <dlfcn.h>

namespace qoro
{

namespace
{

/// libavcodec's structures differ between its versions, so only the version of the headers fits.
constexpr const char* LibraryName = "libavcodec.so." AV_STRINGIFY(LIBAVCODEC_VERSION_MAJOR);

/// @return false if the library has no such function
template <typename Function>
bool find(void* library, const char* name, Function& function)
{
    // Looks also in the libraries that it links.
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

struct Library {
    LibavFunctions functions{};
    bool complete = false;

    Library()
    {
        void* const library = dlopen(LibraryName, RTLD_LAZY | RTLD_LOCAL);
        if (!library)
            return;
        complete = true;
#define QORO_LIBAV_FIND(name) complete = find(library, #name, functions.name) && complete;
        QORO_LIBAV_FUNCTIONS(QORO_LIBAV_FIND)
#undef QORO_LIBAV_FIND
        // What is wrong with a stranger's video does not belong on standard error. A host's own choice is left alone.
        if (complete && functions.av_log_get_level() == AV_LOG_INFO)
            functions.av_log_set_level(AV_LOG_QUIET);
    }
};

} // namespace

const LibavFunctions* libav()
{
    static const Library library;
    return library.complete ? &library.functions : nullptr;
}

} // namespace qoro
