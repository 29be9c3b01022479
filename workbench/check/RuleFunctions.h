#pragma once

#include "workbench/check/Rules.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// The rules' functions, for the table in Rules.cpp. Those of one subject are in one file.

namespace qoro
{

// ClosingRules.cpp
std::vector<Suspicion> close_never(const CheckedSession& session);
std::vector<Suspicion> close_late(const CheckedSession& session);
std::vector<Suspicion> close_ignored(const CheckedSession& session);

// ScreenRules.cpp
std::vector<Suspicion> empty_screen(const CheckedSession& session);
std::vector<Suspicion> control_off_screen(const CheckedSession& session);
std::vector<Suspicion> control_covered(const CheckedSession& session);
std::vector<Suspicion> control_in_unsafe_area(const CheckedSession& session);
std::vector<Suspicion> title_cut_off(const CheckedSession& session);

// TrackerRules.cpp
std::vector<Suspicion> tracker_never_sent(const CheckedSession& session);
std::vector<Suspicion> tracker_sent_twice(const CheckedSession& session);
std::vector<Suspicion> tracker_late(const CheckedSession& session);
std::vector<Suspicion> macro_unreplaced(const CheckedSession& session);
std::vector<Suspicion> null_in_address(const CheckedSession& session);
std::vector<Suspicion> address_not_encoded(const CheckedSession& session);

// ActionRules.cpp
std::vector<Suspicion> button_leads_nowhere(const CheckedSession& session);
std::vector<Suspicion> button_not_shown(const CheckedSession& session);
std::vector<Suspicion> main_thread_blocked(const CheckedSession& session);

// TagRules.cpp
std::vector<Suspicion> tag_without_ad(const CheckedSession& session);
std::vector<Suspicion> tag_ignored(const CheckedSession& session);
std::vector<Suspicion> media_file_contradicted(const BaseScenario& tag);

// AdRules.cpp
std::vector<Suspicion> missing_file(const BaseScenario& ad);
std::vector<Suspicion> unknown_key(const BaseScenario& ad);
std::vector<Suspicion> setting_without_effect(const BaseScenario& ad);
std::vector<Suspicion> http_beside_https(const BaseScenario& ad);
std::vector<Suspicion> address_malformed(const BaseScenario& ad);
std::vector<Suspicion> video_unreadable(const BaseScenario& ad);
std::vector<Suspicion> video_proportions(const BaseScenario& ad);

// PageRules.cpp
std::vector<Suspicion> page_without_library(const BaseScenario& ad);
std::vector<Suspicion> page_listens_in_vain(const BaseScenario& ad);
std::vector<Suspicion> event_never_sent(const CheckedSession& session);

/// JSON path in the ad of the button that a control shows, by its order among those that the device supports; that of
/// all buttons if some are left out.
/// @param control 0 or 1
std::string path_of_button(const CheckedSession& session, std::size_t control);

/// Whether a page's text has a call that closes the ad.
bool page_can_close(std::string_view page);
/// Whether a page's text takes over closing: it draws its own close control.
bool page_draws_close_control(std::string_view page);
/// Whether a page's text listens to the ad's close button, which then no longer closes by itself.
bool page_listens_to_close_button(std::string_view page);

} // namespace qoro
