#include "vast/MacroTable.h"
#include "vast/MacroText.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <utility>

namespace qoro::vast
{

namespace
{

using Values = MacroValues;

// Each of the following appends a value, or returns false when it is absent.

bool put(std::string& out, const std::optional<std::string>& value)
{
    if (!value || value->empty())
        return false;
    append_encoded(out, *value);
    return true;
}

bool put(std::string& out, const std::optional<int>& value)
{
    if (!value)
        return false;
    append_number(out, *value);
    return true;
}

bool put(std::string& out, const std::optional<bool>& value)
{
    if (value)
        out += *value ? '1' : '0';
    return value.has_value();
}

bool put_pair(std::string& out, const std::optional<int>& first, const std::optional<int>& second)
{
    if (!first || !second)
        return false;
    append_number(out, *first);
    out += ',';
    append_number(out, *second);
    return true;
}

void append_item(std::string& out, const std::string& item)
{
    append_encoded(out, item);
}

void append_item(std::string& out, int item)
{
    append_number(out, item);
}

void append_item(std::string& out, const UniversalAdId& item)
{
    append_encoded(out, item.registry.empty() ? std::string_view("unknown") : std::string_view(item.registry));
    out += "%20";
    append_encoded(out, item.value);
}

template <typename Item>
void append_list(std::string& out, const std::vector<Item>& items)
{
    bool first = true;
    for (const Item& item : items) {
        if (!std::exchange(first, false))
            out += ',';
        append_item(out, item);
    }
}

template <typename Item>
bool put(std::string& out, const std::optional<std::vector<Item>>& items)
{
    if (items)
        append_list(out, *items);
    return items.has_value();
}

/// The names of those that are true.
void append_words(std::string& out, std::initializer_list<std::pair<bool, std::string_view>> words)
{
    bool first = true;
    for (const auto& [holds, word] : words) {
        if (!holds)
            continue;
        if (!std::exchange(first, false))
            out += ',';
        out += word;
    }
}

bool put(std::string& out, const std::optional<PlayerAbilities>& value)
{
    if (value)
        append_words(out, {{value->skip, "skip"},
                           {value->mute, "mute"},
                           {value->autoplay, "autoplay"},
                           {value->muted_autoplay, "mautoplay"},
                           {value->fullscreen, "fullscreen"},
                           {value->icon, "icon"}});
    return value.has_value();
}

bool put(std::string& out, const std::optional<PlayerState>& value)
{
    if (value)
        append_words(out, {{value->muted, "muted"}, {value->fullscreen, "fullscreen"}});
    return value.has_value();
}

bool put(std::string& out, const std::optional<InventoryState>& value)
{
    if (value)
        append_words(out, {{value->skippable, "skippable"},
                           {value->autoplayed, "autoplayed"},
                           {value->muted_autoplayed, "mautoplayed"},
                           {value->opt_in, "optin"}});
    return value.has_value();
}

bool put_regulations(std::string& out, const Values::Regulation& value)
{
    const bool coppa = value.coppa.value_or(false);
    const bool gdpr = value.gdpr.value_or(false);
    append_words(out, {{coppa, "coppa"}, {gdpr, "gdpr"}});
    return coppa || gdpr || (value.coppa && value.gdpr);
}

bool put_cache_buster(Expansion& expansion)
{
    if (!expansion.cache_buster) {
        if (!expansion.values.request.random)
            return false;
        // Eight digits without a leading zero.
        expansion.cache_buster = 10'000'000 + expansion.values.request.random() % 90'000'000;
    }
    append_number(expansion.out, *expansion.cache_buster);
    return true;
}

using E = Expansion;
using enum Where;

constexpr auto Macros = std::to_array<Macro>({
    {"TIMESTAMP", Everywhere,
     [](E& e) { return append_timestamp(e.out, e.values.request.time, e.values.request.time_zone); }},
    {"CACHEBUSTING", Everywhere, put_cache_buster},

    {"CONTENTPLAYHEAD", Everywhere, [](E& e) { return append_time(e.out, e.values.ad_break.content_time); }},
    {"MEDIAPLAYHEAD", Everywhere, [](E& e) { return append_time(e.out, e.values.ad_break.content_time); }},
    {"BREAKPOSITION", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.position); }},
    {"BLOCKEDADCATEGORIES", Documents, [](E& e) { return put(e.out, e.values.ad_break.blocked_categories); }},
    {"ADCATEGORIES", Documents, [](E& e) { return put(e.out, e.values.ad_break.categories); }},
    {"ADCOUNT", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.ad_count); }},
    {"TRANSACTIONID", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.transaction_id); }},
    {"PLACEMENTTYPE", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.placement_type); }},
    {"ADTYPE", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.ad_type); }},
    {"UNIVERSALADID", Trackers,
     [](E& e) {
         append_list(e.out, e.values.ad_break.universal_ad_ids);
         return !e.values.ad_break.universal_ad_ids.empty();
     }},
    {"BREAKMAXDURATION", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.max_duration); }},
    {"BREAKMINDURATION", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.min_duration); }},
    {"BREAKMAXADS", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.max_ads); }},
    {"BREAKMINADLENGTH", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.min_ad_length); }},
    {"BREAKMAXADLENGTH", Everywhere, [](E& e) { return put(e.out, e.values.ad_break.max_ad_length); }},

    {"IFA", Everywhere, [](E& e) { return put(e.out, e.values.client.advertising_id); }, true},
    {"IFATYPE", Everywhere, [](E& e) { return put(e.out, e.values.client.advertising_id_type); }, true},
    {"CLIENTUA", Everywhere, [](E& e) { return put(e.out, e.values.client.client_agent); }},
    {"SERVERUA", Everywhere, [](E& e) { return put(e.out, e.values.client.server_agent); }},
    {"DEVICEUA", Everywhere, [](E& e) { return put(e.out, e.values.client.device_agent); }},
    {"SERVERSIDE", Everywhere, [](E& e) { return put(e.out, e.values.client.server_side); }},
    {"DEVICEIP", Everywhere, [](E& e) { return put(e.out, e.values.client.device_address); }, true},
    {"LATLONG", Everywhere,
     [](E& e) { return append_place(e.out, e.values.client.latitude, e.values.client.longitude); }, true},

    {"DOMAIN", Everywhere, [](E& e) { return put(e.out, e.values.publisher.domain); }},
    {"PAGEURL", Everywhere, [](E& e) { return put(e.out, e.values.publisher.page); }},
    {"APPBUNDLE", Everywhere, [](E& e) { return put(e.out, e.values.publisher.app_bundle); }},

    {"VASTVERSIONS", Documents, [](E& e) { return put(e.out, e.values.capabilities.vast_versions); }},
    {"APIFRAMEWORKS", Documents, [](E& e) { return put(e.out, e.values.capabilities.api_frameworks); }},
    {"EXTENSIONS", Documents, [](E& e) { return put(e.out, e.values.capabilities.extensions); }},
    {"VERIFICATIONVENDORS", Documents, [](E& e) { return put(e.out, e.values.capabilities.verification_vendors); }},
    {"OMIDPARTNER", Everywhere, [](E& e) { return put(e.out, e.values.capabilities.omid_partner); }},
    {"MEDIAMIME", Documents, [](E& e) { return put(e.out, e.values.capabilities.media_types); }},
    {"PLAYERCAPABILITIES", Everywhere, [](E& e) { return put(e.out, e.values.capabilities.abilities); }},
    {"CLICKTYPE", Everywhere, [](E& e) { return put(e.out, e.values.capabilities.click_type); }},

    {"PLAYERSTATE", Trackers, [](E& e) { return put(e.out, e.values.player.state); }},
    {"INVENTORYSTATE", Everywhere, [](E& e) { return put(e.out, e.values.player.inventory); }},
    {"PLAYERSIZE", Everywhere, [](E& e) { return put_pair(e.out, e.values.player.width, e.values.player.height); }},
    {"ADPLAYHEAD", Trackers, [](E& e) { return append_time(e.out, e.values.player.ad_time); }},
    {"ASSETURI", Trackers, [](E& e) { return put(e.out, e.values.player.asset); }},
    {"CONTENTID", Everywhere, [](E& e) { return put(e.out, e.values.player.content_id); }},
    {"CONTENTURI", Everywhere, [](E& e) { return put(e.out, e.values.player.content); }},
    {"PODSEQUENCE", Trackers, [](E& e) { return put(e.out, e.values.player.pod_sequence); }},
    {"ADSERVINGID", Trackers, [](E& e) { return put(e.out, e.values.player.ad_serving_id); }},

    {"CLICKPOS", Clicks, [](E& e) { return put_pair(e.out, e.values.request.click_x, e.values.request.click_y); }},
    {"ERRORCODE", Errors, [](E& e) { return put(e.out, e.values.request.error_code); }},
    {"REASON", NotVerified, [](E& e) { return put(e.out, e.values.request.reason); }},

    {"LIMITADTRACKING", Everywhere, [](E& e) { return put(e.out, e.values.regulation.limit_ad_tracking); }},
    {"REGULATIONS", Everywhere, [](E& e) { return put_regulations(e.out, e.values.regulation); }},
    {"GDPRCONSENT", Everywhere, [](E& e) { return put(e.out, e.values.regulation.tcf_string); }},

    // Added to the list later, for every version 4.x.
    {"STOREID", Everywhere, [](E& e) { return put(e.out, e.values.publisher.store_id); }},
    {"STOREURL", Everywhere, [](E& e) { return put(e.out, e.values.publisher.store_address); }},
    {"PLAYBACKMETHODS", Everywhere, [](E& e) { return put(e.out, e.values.player.playback_method); }},
    {"CONTENTCAT", Documents, [](E& e) { return put(e.out, e.values.ad_break.content_categories); }},
    {"GPPSTRING", Everywhere, [](E& e) { return put(e.out, e.values.regulation.gpp_string); }},
    {"GPPSECTIONID", Everywhere, [](E& e) { return put(e.out, e.values.regulation.gpp_section_ids); }},
});

/// A hash of a name without collisions between the macros' names; the factor is found when this is compiled.
struct Index {
    static constexpr std::size_t Bits = 10;
    static constexpr std::uint8_t Empty = 255;
    std::uint32_t factor = 0;
    std::array<std::uint8_t, std::size_t{1} << Bits> slots = {};

    static constexpr std::uint32_t add(std::uint32_t hash, char c, std::uint32_t factor)
    {
        return (hash ^ static_cast<unsigned char>(c)) * factor;
    }
    static constexpr std::size_t slot(std::uint32_t hash) { return hash >> (32 - Bits); }
};

constexpr Index make_index()
{
    static_assert(Macros.size() < Index::Empty);
    Index index;
    for (std::uint32_t factor = 0x9E3779B1;; factor += 2) {
        index.factor = factor;
        index.slots.fill(Index::Empty);
        bool distinct = true;
        for (std::size_t i = 0; distinct && i < Macros.size(); ++i) {
            std::uint32_t hash = 0;
            for (const char c : Macros[i].name)
                hash = Index::add(hash, c, factor);
            std::uint8_t& slot = index.slots[Index::slot(hash)];
            distinct = slot == Index::Empty;
            slot = static_cast<std::uint8_t>(i);
        }
        if (distinct)
            return index;
    }
}

constexpr Index Names = make_index();

static_assert(std::all_of(Macros.begin(), Macros.end(), [](const Macro& macro) {
    return std::all_of(macro.name.begin(), macro.name.end(), is_macro_character);
}));

} // namespace

const Macro* find_macro(std::string_view name)
{
    std::uint32_t hash = 0;
    for (const char c : name)
        hash = Index::add(hash, c, Names.factor);
    const std::uint8_t number = Names.slots[Index::slot(hash)];
    return number != Index::Empty && Macros[number].name == name ? &Macros[number] : nullptr;
}

std::vector<std::string_view> macro_names()
{
    std::vector<std::string_view> names;
    names.reserve(Macros.size());
    for (const Macro& macro : Macros)
        names.push_back(macro.name);
    return names;
}

} // namespace qoro::vast
