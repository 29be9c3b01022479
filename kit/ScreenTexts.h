#pragma once

#include "platform/Translatable.h"

namespace qoro
{

/// All texts of the kit that the viewer reads or hears, untranslated.
namespace screen_texts
{

inline constexpr const char* Store = translatable("Store");
inline constexpr const char* Calendar = translatable("Calendar");
inline constexpr const char* Message = translatable("Message");
inline constexpr const char* PageDoesNotCome = translatable("This page could not be loaded.");
inline constexpr const char* PageHasStopped = translatable("This page has stopped working.");
inline constexpr const char* AddressCannotBeShown = translatable("There is nothing that can be shown here.");

// Accessible names of views and controls without a text of their own.

inline constexpr const char* Back = translatable("Back");
inline constexpr const char* Forward = translatable("Forward");
inline constexpr const char* Reload = translatable("Reload");
inline constexpr const char* Close = translatable("Close");
inline constexpr const char* SafeConnection = translatable("The connection is secure");
inline constexpr const char* UnsafeConnection = translatable("The connection is not secure");
inline constexpr const char* ShowControls = translatable("Show the controls");
inline constexpr const char* FirstOffer = translatable("Learn more");
inline constexpr const char* SecondOffer = translatable("Learn more, second offer");
inline constexpr const char* AboutThisAd = translatable("About this ad");
inline constexpr const char* Video = translatable("Video");
inline constexpr const char* AdPage = translatable("Page of the ad");
inline constexpr const char* Loading = translatable("Loading");
inline constexpr CountedText SecondsLeft =
    translatable_count("Can be closed in %d second", "Can be closed in %d seconds");

} // namespace screen_texts

} // namespace qoro
