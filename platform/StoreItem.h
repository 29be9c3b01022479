#pragma once

#include "platform/Value.h"

namespace qoro
{

/// The default store page: shows an item by its AppStream identifier when the host has not set another.
inline constexpr const char* DefaultStorePage = "https://flathub.org/apps/{id}";

/// A store item and the attribution that the store receives. Any field may be null.
struct StoreItem {
    NSString id;
    NSString campaign;
    NSString provider;
    NSString ad_provider;
};

} // namespace qoro
