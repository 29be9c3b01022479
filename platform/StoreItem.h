#pragma once

#include "platform/Export.h"
#include "platform/Value.h"

namespace QORO_EXPORT qoro
{

/// The default store page: shows an item by its AppStream identifier when the host has not set another.
inline constexpr const char* DefaultStorePage = "https://flathub.org/apps/{id}";

/// A store item and the attribution that the store receives. Any field may be null.
struct StoreItem {
    NSString id;          ///< Value of {id} in the store page's address. An item without one has no page.
    NSString campaign;    ///< Value of {campaign}.
    NSString provider;    ///< Value of {provider}.
    NSString ad_provider; ///< Value of {adProvider}.
};

} // namespace qoro
