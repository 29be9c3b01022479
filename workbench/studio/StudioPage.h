#pragma once

#include <string>

namespace qoro
{

/// The page of the studio: a report that its server changes. It loads nothing from elsewhere.
/// @param data as session_data()
std::string studio_page(const std::string& title, const std::string& data);

} // namespace qoro
