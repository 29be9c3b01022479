#include "platform/HostCall.h"

#include "platform/KitEnumerations.h"
#include "platform/Platform.h"

#include <cstdio>
#include <exception>
#include <string>

namespace qoro
{

namespace
{

/// Words for the exception that is being handled.
std::string exception_text()
{
    try {
        throw;
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (const PlatformFault& fault) {
        return fault.operation + ": " + fault.message;
    } catch (...) {
        return "an exception of an unknown type";
    }
}

} // namespace

void report_exception(std::string_view callback, Platform* platform) noexcept
{
    try {
        const std::string text = exception_text();
        if (!platform || !platform->event_sink()) {
            std::fprintf(stderr, "qoro: %.*s has thrown: %s\n", static_cast<int>(callback.size()), callback.data(),
                         text.c_str());
            return;
        }
        platform->emit(event::Faulted{callback, text});
        platform->emit(event::Logged{ZulixLogTagOfError, std::string(callback) + " has thrown: " + text});
    } catch (...) {
        // The event sink has thrown as well, or the memory is exhausted: a report is not possible.
        std::fputs("qoro: an exception could not be reported\n", stderr);
    }
}

} // namespace qoro
