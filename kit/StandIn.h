#pragma once

#include "kit/PageScreen.h"
#include "platform/StoreItem.h"

#include <functional>
#include <memory>
#include <string>

namespace qoro
{

// Stand-ins for a calendar, a message composer and a store that a device lacks, for programs that test ads: screens
// over the ad that show the viewer what the program would receive, and emit it as an event.

/// The page of a store's item, or, without store pages (QoroAdManager::has_store_pages), the item's values.
/// @param filled as for PageScreen::create
/// @param on_close as for PageScreen::create
std::shared_ptr<PageScreen> store_screen(const UIView& filled, const StoreItem& item, std::function<void()> on_close);

/// Shows an event instead of a calendar.
/// @param event as iCalendar text (RFC 5545)
void show_calendar_stand_in(Platform& platform, const std::string& event);

/// Shows an address instead of the message composer (sms:) or of a store (any other).
/// @param closed called once, when the viewer has closed the screen; may be empty
void show_address_stand_in(Platform& platform, const NSURL& address, std::function<void()> closed);

/// Removes the screens of calendars, composers and addresses without a call of their functions, as for a new ad.
void remove_stand_ins(Platform& platform);

} // namespace qoro
