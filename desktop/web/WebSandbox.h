#pragma once

#include "platform/Export.h"

namespace QORO_EXPORT qoro
{

/// Whether the web engine's processes can be sandboxed on this machine. To be checked before the first engine is
/// created, because WebKit terminates the program if they cannot.
bool sandbox_works();

/// Whether there is space for the file that WebKit writes for each sandboxed process. WebKit terminates the program if
/// there is none.
bool sandbox_has_room();

/// Disables the sandbox. To be called before the first engine is created; for trusted pages only.
void give_up_sandbox();

} // namespace qoro
