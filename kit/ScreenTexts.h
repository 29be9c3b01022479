#pragma once

namespace qoro
{

/// Every text of the kit's own screens that the viewer reads.
namespace screen_texts
{

inline constexpr const char* Store = "Store";
inline constexpr const char* PageDoesNotCome = "This page could not be loaded.";
inline constexpr const char* PageHasStopped = "This page has stopped working.";
inline constexpr const char* AddressCannotBeShown = "There is nothing that can be shown here.";

} // namespace screen_texts

} // namespace qoro
