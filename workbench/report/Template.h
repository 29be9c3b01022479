#pragma once

#include <string_view>

namespace qoro
{

// Files of this folder, as they are.

std::string_view report_page_html();
std::string_view report_page_css();
std::string_view report_drawing_js();
std::string_view report_lanes_js();
std::string_view report_tables_js();
std::string_view report_page_js();

} // namespace qoro
