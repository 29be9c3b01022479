#pragma once

#include "desktop/screen/Toolkit.h"
#include "desktop/web/WebSandbox.h"

namespace qoro::test
{

/// Starts what tests of the screen and of pages need, once a process; the tests' own pages go without the sandbox where
/// the machine withholds it.
/// @return false when there is no display
inline bool start_desktop()
{
    static const bool started = [] {
        if (!sandbox_works())
            give_up_sandbox();
        return start_toolkit();
    }();
    return started;
}

} // namespace qoro::test
