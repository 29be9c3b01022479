#pragma once

#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"

namespace qoro::test
{

/// Starts the toolkit, once per process, for tests of the screen and of pages. Turns the sandbox of the pages off on
/// machines that do not support it.
/// @return false if there is no display
inline bool start_desktop()
{
    static const bool started = [] {
        if (!sandbox_works())
            give_up_sandbox();
        prepare_program();
        return start_toolkit();
    }();
    return started;
}

} // namespace qoro::test
