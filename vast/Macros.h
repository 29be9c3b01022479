#pragma once

#include "platform/Export.h"
#include "vast/Model.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The macros in a VAST document's addresses (IAB Tech Lab, VAST 4.3, section 6, and its list of macros, as far as the
// list assigns them to 4.x).

namespace QORO_EXPORT qoro
{

namespace vast
{

/// What an address is requested for. The standard limits some macros to some kinds; elsewhere they have the value -1.
enum class AddressKind {
    /// A VAST document: a VASTAdTagURI, and the address that a host opens.
    Document,
    /// Impressions, tracking events and every other tracker that is not listed below.
    Tracking,
    /// ClickTracking: [CLICKPOS] too.
    ClickTracking,
    /// Error: [ERRORCODE] too.
    Error,
    /// The event verificationNotExecuted: [REASON] too.
    VerificationNotExecuted,
};

/// What the viewer (skip, mute, fullscreen) and the player can do.
struct PlayerAbilities {
    /// The viewer can skip.
    bool skip = false;
    /// The viewer can mute.
    bool mute = false;
    /// With sound.
    bool autoplay = false;
    /// Without sound.
    bool muted_autoplay = false;
    /// The viewer can fill the screen.
    bool fullscreen = false;
    /// Shows the document's icons.
    bool icon = false;
};

/// The player's present state.
struct PlayerState {
    /// Without sound.
    bool muted = false;
    /// Fills the screen.
    bool fullscreen = false;
};

/// How the ad is offered.
struct InventoryState {
    /// The viewer may skip the ad.
    bool skippable = false;
    /// With sound.
    bool autoplayed = false;
    /// It started by itself, without sound.
    bool muted_autoplayed = false;
    /// The viewer has chosen to see the ad.
    bool opt_in = false;
};

/// The values of all macros, in the standard's groups. An absent value has the text -1 ("unknown"). An empty text is
/// absent. An empty list is a known value, and its text is empty.
struct MacroValues {
    /// Changes with every request. The error, the reason and the click have groups of their own in the standard.
    struct Request {
        /// What the address is requested for.
        AddressKind kind = AddressKind::Tracking;
        /// [TIMESTAMP]: seconds since 1970-01-01 UTC. A time outside the years 0 to 9999 is unknown.
        std::optional<double> time = {};
        /// Of [TIMESTAMP]: minutes east of UTC, less than a day.
        int time_zone = 0;
        /// [CACHEBUSTING]: any 32 bits. Called at most once per address, during the expansion; null: -1.
        std::function<std::uint32_t()> random = {};
        /// [CLICKPOS]: points from the player's left and top edges.
        /// @{
        std::optional<int> click_x = {};
        std::optional<int> click_y = {};
        /// @}
        /// [ERRORCODE]: of the standard's table of errors.
        std::optional<int> error_code = {};
        /// [REASON]: 1 rejected, 2 not supported, 3 error while loading.
        std::optional<int> reason = {};
    };

    /// The ad, and the break in the content that it plays in.
    struct AdBreak {
        /// [MEDIAPLAYHEAD], and its older name [CONTENTPLAYHEAD]: seconds of the content, not of the ad.
        std::optional<double> content_time = {};
        /// [BREAKPOSITION]: 1 before, 2 within, 3 after the content, 4 without content, 0 other.
        std::optional<int> position = {};
        /// [BLOCKEDADCATEGORIES]: from the wrappers' BlockedAdCategories.
        std::optional<std::vector<std::string>> blocked_categories = {};
        /// [ADCATEGORIES]: those that are asked for.
        std::optional<std::vector<std::string>> categories = {};
        /// [ADCOUNT]: of a request, the ads that are expected; of a tracker, the ads of this chain of documents that
        /// have played, with the current one.
        std::optional<int> ad_count = {};
        /// [TRANSACTIONID]: a UUID that all requests of a chain share.
        std::optional<std::string> transaction_id = {};
        /// [PLACEMENTTYPE]: AdCOM's list "Placement Subtypes - Video".
        std::optional<int> placement_type = {};
        /// The macro [ADTYPE]: "video", "audio" or "hybrid".
        std::optional<std::string> ad_type = {};
        /// [UNIVERSALADID]. An ad without one: -1. An identifier without a registry belongs to the registry "unknown".
        std::vector<UniversalAdId> universal_ad_ids = {};
        /// [BREAKMAXDURATION], [BREAKMINDURATION], [BREAKMINADLENGTH], [BREAKMAXADLENGTH]: seconds.
        /// @{
        std::optional<int> max_duration = {};
        std::optional<int> min_duration = {};
        std::optional<int> min_ad_length = {};
        std::optional<int> max_ad_length = {};
        /// @}
        /// [BREAKMAXADS].
        std::optional<int> max_ads = {};
        /// [CONTENTCAT]: identifiers of IAB Tech Lab's Content Taxonomy 2.x.
        std::optional<std::vector<std::string>> content_categories = {};
    };

    /// The device and the software. The first five identify the viewer: they are -2 ("withheld"), even when absent,
    /// unless viewer_may_be_identified().
    struct Client {
        /// [IFA]: a resettable advertising identifier.
        std::optional<std::string> advertising_id = {};
        /// [IFATYPE]: its scheme, as IAB Tech Lab's guidelines name it.
        std::optional<std::string> advertising_id_type = {};
        /// [DEVICEIP].
        std::optional<std::string> device_address = {};
        /// [LATLONG]: degrees, sent with up to six decimals. Unknown unless both are present and in range.
        /// @{
        std::optional<double> latitude = {};
        std::optional<double> longitude = {};
        /// @}
        /// [CLIENTUA]: "player/version plugin/version".
        std::optional<std::string> client_agent = {};
        /// [SERVERUA]: of a server that requests on behalf of a device.
        std::optional<std::string> server_agent = {};
        /// [DEVICEUA]: of the device that shows the ad, if a server requests on its behalf.
        std::optional<std::string> device_agent = {};
        /// [SERVERSIDE]: 0 the device requests, 1 a server at the device's wish, 2 a server on its own.
        std::optional<int> server_side = 0;
    };

    /// Where the ad is shown.
    struct Publisher {
        /// [DOMAIN]: of the page.
        std::optional<std::string> domain = {};
        /// [PAGEURL].
        std::optional<std::string> page = {};
        /// [APPBUNDLE].
        std::optional<std::string> app_bundle = {};
        /// [STOREID].
        std::optional<std::string> store_id = {};
        /// [STOREURL].
        std::optional<std::string> store_address = {};
    };

    /// What the player can do.
    struct Capabilities {
        /// Their type.
        using Abilities = PlayerAbilities;
        /// [VASTVERSIONS]: AdCOM's list "Creative Subtypes".
        std::optional<std::vector<int>> vast_versions = {};
        /// [APIFRAMEWORKS]: AdCOM's list "API Frameworks".
        std::optional<std::vector<int>> api_frameworks = {};
        /// [EXTENSIONS]: types of Extension elements.
        std::optional<std::vector<std::string>> extensions = {};
        /// [VERIFICATIONVENDORS].
        std::optional<std::vector<std::string>> verification_vendors = {};
        /// The macro [OMIDPARTNER]: "name/version".
        std::optional<std::string> omid_partner = {};
        /// [MEDIAMIME].
        std::optional<std::vector<std::string>> media_types = {};
        /// [PLAYERCAPABILITIES].
        std::optional<PlayerAbilities> abilities = {};
        /// [CLICKTYPE]: 0 not clickable, 1 the whole video, 2 a button, 3 with a confirmation.
        std::optional<int> click_type = {};
    };

    /// The player and what it plays.
    struct Player {
        /// Its type.
        using State = PlayerState;
        /// Its type.
        using Inventory = InventoryState;
        /// [PLAYERSTATE].
        std::optional<PlayerState> state = {};
        /// [INVENTORYSTATE].
        std::optional<InventoryState> inventory = {};
        /// [PLAYERSIZE]: points. Unknown unless both are present.
        /// @{
        std::optional<int> width = {};
        std::optional<int> height = {};
        /// @}
        /// [ADPLAYHEAD]: seconds of the ad. A negative or non-finite time is unknown, here as in content_time.
        std::optional<double> ad_time = {};
        /// [ASSETURI]: of the media file.
        std::optional<std::string> asset = {};
        /// [CONTENTID]: "registry identifier".
        std::optional<std::string> content_id = {};
        /// [CONTENTURI].
        std::optional<std::string> content = {};
        /// [PODSEQUENCE]: of the ad.
        std::optional<int> pod_sequence = {};
        /// [ADSERVINGID]: of the ad.
        std::optional<std::string> ad_serving_id = {};
        /// [PLAYBACKMETHODS]: AdCOM's list "Playback Methods".
        std::optional<int> playback_method = {};
    };

    /// What the law and the viewer allow.
    struct Regulation {
        /// [LIMITADTRACKING].
        std::optional<bool> limit_ad_tracking = {};
        /// [REGULATIONS]: those that apply. The list is known when one applies or both are known not to.
        /// @{
        std::optional<bool> coppa = {};
        std::optional<bool> gdpr = {};
        /// @}
        /// [GDPRCONSENT]: the TCF string.
        std::optional<std::string> tcf_string = {};
        /// No macro; for viewer_may_be_identified(). Four characters, of which the third is Y for a viewer who has
        /// opted out of the sale of data (IAB Tech Lab, U.S. Privacy String).
        std::optional<std::string> us_privacy = {};
        /// [GPPSTRING].
        std::optional<std::string> gpp_string = {};
        /// [GPPSECTIONID]: those that apply.
        std::optional<std::vector<int>> gpp_section_ids = {};
    };

    /// Of one request.
    Request request = {};
    /// Of the ad.
    AdBreak ad_break = {};
    /// Of the device.
    Client client = {};
    /// Of the application.
    Publisher publisher = {};
    /// Of the player in general.
    Capabilities capabilities = {};
    /// Of the player now.
    Player player = {};
    /// Of the viewer.
    Regulation regulation = {};
};

/// Whether the viewer's identifiers may be sent. All of these must hold:
/// - limit_ad_tracking is not true, coppa is not true, and the third character of us_privacy is not Y;
/// - if gdpr is true, or the GPP section 2 (TCF for the European Union) applies: tcf_string is present, or gpp_string
/// is
///   and its section 2 applies;
/// - otherwise the host has stated something: gdpr is false, or tcf_string, us_privacy or gpp_string is present.
/// The strings are not decoded beyond that: a host supplies identifiers only if they permit it.
bool viewer_may_be_identified(const MacroValues::Regulation& regulation);

/// A new value of [TRANSACTIONID]: a UUID of version 4 (RFC 9562).
/// @param random gives any 32 bits; called four times
std::string make_transaction_id(const std::function<std::uint32_t()>& random);

/// Replaces every macro [X] and %5BX%5D, with hexadecimal digits in either case, by its value. Everything else stays
/// byte for byte: other names, names in lower case, an escaped bracket with a plain one. A value is not expanded again.
/// Values are encoded as by ECMAScript's encodeURIComponent (section 6.1): letters, digits and -_.!~*'() stay. Lists
/// are separated by commas, which are not encoded. Times are HH:MM:SS.mmm. Safe on any thread, if the generator is.
std::string expand(std::string_view address, const MacroValues& values);
/// As above, appended to a string. It may not contain the address.
void expand(std::string_view address, const MacroValues& values, std::string& out);

/// All names, without brackets, in the standard's order.
std::vector<std::string_view> macro_names();

} // namespace vast

} // namespace qoro
