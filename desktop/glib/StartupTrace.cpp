#include "desktop/glib/StartupTrace.h"

#include <chrono>
#include <fstream>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string_view>

namespace qoro
{

namespace
{

double monotonic_seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Static objects are initialised after the program's libraries.
const double Linked = monotonic_seconds();

struct StartupTrace {
    std::mutex mutex;
    std::ofstream file;
    std::set<std::string_view> seen;

    void write(const char* what, double at)
    {
        const std::scoped_lock lock(mutex);
        if (!seen.insert(what).second)
            return;
        file << "{\"monotonic\":" << std::fixed << at << ",\"what\":\"" << what << "\"}" << std::endl;
    }
};

/// Null unless the start is traced. Never destroyed: threads outlive main().
StartupTrace* tracing = nullptr;

} // namespace

bool trace_startup(const std::string& file)
{
    auto* trace = new StartupTrace{.mutex = {}, .file = std::ofstream(file), .seen = {}};
    if (!trace->file) {
        delete trace;
        return false;
    }
    trace->write("linked", Linked);
    tracing = trace;
    return true;
}

void startup_point(const char* what)
{
    if (tracing)
        tracing->write(what, monotonic_seconds());
}

} // namespace qoro
