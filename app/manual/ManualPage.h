#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace qoro
{

/// The manual page qoro-ad(1), in the macros of man(7).
std::string manual_page(const CLI::App& program, const std::string& version);

} // namespace qoro
