#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// A script or style that a page's security policy names by its hash.
struct PagePiece {
    std::string_view text;
    /// SHA-256 in hexadecimal, made by the build.
    std::string_view sha256;
};

/// What a page has beyond a report.
struct PageAdditions {
    std::vector<PagePiece> scripts = {};
    std::vector<PagePiece> styles = {};
    /// Elements before the scripts.
    std::string_view html = {};
    /// A directive of the security policy, with a semicolon before it.
    std::string_view policy = {};
};

/// A report's page with additions.
/// @param data as report_data()
std::string page_of(const std::string& title, const std::string& data, const PageAdditions& additions);

} // namespace qoro
