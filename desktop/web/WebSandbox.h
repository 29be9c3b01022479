#pragma once

namespace qoro
{

/// Whether the web engine's processes can be locked away on this machine. Asked before the first engine is made,
/// because WebKit ends the whole program where they cannot.
bool sandbox_works();

/// Whether there is room for what WebKit writes down of each process that it locks away. WebKit ends the whole program
/// where there is none.
bool sandbox_has_room();

/// Goes on without the sandbox. To be called before the first engine is made; for trusted pages alone.
void give_up_sandbox();

} // namespace qoro
