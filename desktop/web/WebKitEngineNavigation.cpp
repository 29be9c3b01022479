#include "desktop/net/Reach.h"
#include "desktop/web/WebKitEngine.h"

#include "desktop/web/WebKitFunctions.h"

#include <string_view>

// Navigation policy.

namespace qoro
{

namespace
{

constexpr int LinkFollowed = 0;
constexpr int OtherNavigation = 5;

/// Whether an address belongs to a document without a server: empty frames and frames with generated content.
bool is_blank(const AddressParts& address)
{
    return address.has_scheme("about");
}

/// Whether the engine can show an address at all. For any other scheme (tel, mailto, file) the listener is only
/// notified.
bool is_loadable(const AddressParts& address)
{
    return address.is_web() || is_blank(address) || address.has_scheme("data") || address.has_scheme("blob");
}

} // namespace

bool WebKitEngine::listener_allows(const char* address, int navigation_type)
{
    bool allowed = false;
    platform_.dispatch([&] { allowed = listener_.should_start_load(NSURL::URLWithString(address), navigation_type); });
    return allowed;
}

/// Whether a page only moves to another of its fragments, which loads nothing (HTML Standard, fragment navigations).
/// Any other navigation would replace the page. A frame's own blank page is indistinguishable from this, and harmless,
/// because it needs no request.
bool WebKitEngine::moves_within(WebKitNavigationAction* action, const std::string& address) const
{
    const char* shown = webkit_web_view_get_uri(view_.get()); // the address that the page's script may have changed
    WebKitURIRequest* request = webkit_navigation_action_get_request(action);
    const AddressParts there(address);
    const AddressParts here(shown ? shown : "");
    return there.fragment() && there.without_fragment() == here.without_fragment() &&
           g_strcmp0(webkit_uri_request_get_http_method(request), "GET") == 0 &&
           !webkit_navigation_action_is_redirect(action) &&
           webkit_navigation_action_get_navigation_type(action) != WEBKIT_NAVIGATION_TYPE_RELOAD;
}

/// Decides a navigation of a creative. The listener is notified, except of blank pages; nothing is loaded whatever it
/// returns.
bool WebKitEngine::may_move(WebKitNavigationAction* action, const std::string& address, bool link)
{
    const auto self = liveness_.pointer();
    const bool within = moves_within(action, address);
    const AddressParts parts(address);
    const bool blank = is_blank(parts) && !within;
    std::string name = address;
    if (within)
        name = std::string(AddressParts(document_).without_fragment()).append("#").append(*parts.fragment());
    const bool allowed = blank || listener_allows(name.c_str(), link ? LinkFollowed : OtherNavigation);
    if (allowed && !within && self.get())
        refuse("navigation", address);
    return allowed && within;
}

/// WebKit would download what it cannot show. A creative may load no document other than the one that the engine itself
/// loads, neither for itself nor for its frames.
bool WebKitEngine::may_be_shown(WebKitResponsePolicyDecision* decision)
{
    const char* address = webkit_uri_request_get_uri(webkit_response_policy_decision_get_request(decision));
    if (!webkit_response_policy_decision_is_mime_type_supported(decision)) {
        refuse("download", address);
        return false;
    }
    const bool own = webkit_response_policy_decision_is_main_frame_main_resource(decision) && own_answer_due_;
    if (kind_ == PageKind::Browsed || own)
        return true;
    refuse("navigation", address);
    return false;
}

bool WebKitEngine::decide_policy(WebKitPolicyDecision* decision, int type)
{
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
        return may_be_shown(reinterpret_cast<WebKitResponsePolicyDecision*>(decision));

    WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
        reinterpret_cast<WebKitNavigationPolicyDecision*>(decision));
    const std::string address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    // In the browser a link may open another program, so a click by a script does not count as one.
    const bool link = webkit_navigation_action_get_navigation_type(action) == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED &&
                      (kind_ == PageKind::Creative || webkit_navigation_action_is_user_gesture(action));

    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION) {
        // No windows. If the viewer followed a link that opens one, it counts as a link, and is shown in the same view
        // if allowed.
        if (!link || !webkit_navigation_action_is_user_gesture(action)) {
            refuse("window", address);
            return false;
        }
        if (kind_ == PageKind::Creative) {
            const auto self = liveness_.pointer();
            if (may_move(action, address, true) && self.get())
                refuse("window", address);
            return false;
        }
        const auto self = liveness_.pointer();
        if (listener_allows(address.c_str(), LinkFollowed) && self.get() && AddressParts(address).is_web()) {
            own_load_ = address;
            webkit_web_view_load_uri(view_.get(), address.c_str());
        }
        return false;
    }
    // The previous page may navigate at the same moment, so the address identifies the engine's own load.
    if (!link && address == own_load_)
        return true;
    const bool redirect = webkit_navigation_action_is_redirect(action) && !wanted_.empty();
    if (leads_inward(redirect ? wanted_ : document_, address, open_zone())) {
        refuse("navigation", address);
        return false;
    }
    if (kind_ == PageKind::Creative)
        return may_move(action, address, link);
    if (is_blank(AddressParts(address)) && !link)
        return true;
    return listener_allows(address.c_str(), link ? LinkFollowed : OtherNavigation) &&
           is_loadable(AddressParts(address));
}

} // namespace qoro
