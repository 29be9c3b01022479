#pragma once

#include <string_view>

namespace qoro
{

/// The program that restores a volume (guard/VolumeGuardProgram.cpp), compiled in: the bytes of an executable.
std::string_view volume_guard_program();

} // namespace qoro
