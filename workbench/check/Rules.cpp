#include "workbench/check/Rules.h"

#include "workbench/check/RuleFunctions.h"

#include <algorithm>
#include <array>

namespace qoro
{

namespace
{

constexpr auto Table = std::to_array<Rule>({
    {.id = "close-never",
     .severity = Severity::Error,
     .title = "The viewer cannot close the ad",
     .why = "In some course of events no close button ever appears, and the viewer has to end the application",
     .cure = "give the ad a countdown (iCloseBtnCountdown) and a limit for buffering (iBufferingSufferTime), and let a "
             "page that takes over closing close the ad",
     .of_session = close_never},
    {.id = "close-ignored",
     .severity = Severity::Error,
     .title = "The close button does not close the ad",
     .why = "The viewer touches a button that is there, and nothing happens",
     .cure = "a page that listens to onclick_closebtn has to call mraid.close()",
     .of_session = close_ignored},
    {.id = "missing-file",
     .severity = Severity::Error,
     .title = "A file of the ad is missing",
     .why = "What is not there is not shown",
     .cure = "add the file to the ad's folder, or correct its name",
     .of_ad = missing_file},
    {.id = "video-unreadable",
     .severity = Severity::Error,
     .title = "The video cannot be played",
     .why = "The viewer sees an empty screen with a close button",
     .cure = "encode the video as H.264 and AAC in MP4, or as WebM",
     .of_ad = video_unreadable},
    {.id = "address-malformed",
     .severity = Severity::Error,
     .title = "An address is malformed",
     .why = "A request to it never leaves the device",
     .cure = "write the address as https://server/path",
     .of_ad = address_malformed},
    {.id = "tag-without-ad",
     .severity = Severity::Error,
     .title = "A tag leads to no ad",
     .why = "The host opens nothing, or an ad of the pod is left out",
     .cure = "correct what the sentence says in the tag's document; qoro-ad import --describe explains the tag",
     .of_session = tag_without_ad},
    {.id = "button-leads-nowhere",
     .severity = Severity::Error,
     .title = "A button leads nowhere",
     .why = "The viewer is interested, and nothing happens; the click is counted all the same",
     .cure = "give the button an address in data/u or app_u, or the values that its action needs",
     .of_session = button_leads_nowhere},
    {.id = "button-not-shown",
     .severity = Severity::Error,
     .title = "An action button is not shown",
     .why = "The viewer cannot follow the ad",
     .cure = "give the button a btn_text, and write the number of place_call as tel:+4930123456",
     .of_session = button_not_shown},
    {.id = "page-without-library",
     .severity = Severity::Error,
     .title = "The page does not receive the script library",
     .why = "Its calls of qoroPlayer and mraid fail",
     .cure = "let the page have a <head> with <script src=\"mraid.js\"></script>",
     .of_ad = page_without_library},
    {.id = "empty-screen",
     .severity = Severity::Error,
     .title = "The screen is empty",
     .why = "The viewer sees neither video nor page for more than a second, though the network is in order",
     .cure = "give the ad a page (strWebViewUrl), or leave out what hides the video at its end",
     .of_session = empty_screen},
    {.id = "tracker-never-sent",
     .severity = Severity::Error,
     .title = "A tracker is never sent",
     .why = "A view to the end is not counted",
     .cure = "put progress trackers beside milestones (dicTrackingUrls), which alone start the check of the position; "
             "use a "
             "video of at least four seconds",
     .of_session = tracker_never_sent},
    {.id = "macro-unreplaced",
     .severity = Severity::Error,
     .title = "A macro is not replaced",
     .why = "The server receives the macro's name instead of its value",
     .cure = "use the macros of docs/ad-file.md, in their exact spelling",
     .of_session = macro_unreplaced},
    {.id = "close-late",
     .severity = Severity::Warning,
     .title = "The close button appears late",
     .why = "Stores and trade bodies limit the time for which an ad holds its viewer",
     .cure = "shorten iCloseBtnCountdown or iBufferingSufferTime, or leave out bIsEndedCloseBtn; give a tag's Linear a "
             "skipoffset",
     .of_session = close_late},
    {.id = "control-off-screen",
     .severity = Severity::Warning,
     .title = "A control is outside the screen",
     .why = "The viewer cannot use it",
     .cure = "choose another layout",
     .of_session = control_off_screen,
     .about_layout = true},
    {.id = "control-covered",
     .severity = Severity::Warning,
     .title = "A control is covered",
     .why = "The viewer cannot use it",
     .cure = "choose another layout",
     .of_session = control_covered,
     .about_layout = true},
    {.id = "title-cut-off",
     .severity = Severity::Warning,
     .title = "A title is cut off",
     .why = "The viewer cannot read what the button does, or whose ad it is",
     .cure = "shorten the text: a button's title has 306 points, a brand text 296",
     .of_session = title_cut_off},
    {.id = "tracker-sent-twice",
     .severity = Severity::Warning,
     .title = "An address is sent twice in one play",
     .why = "The server counts it twice, or cannot distinguish the events",
     .cure = "name the address once, or give each event an address of its own",
     .of_session = tracker_sent_twice},
    {.id = "tracker-late",
     .severity = Severity::Warning,
     .title = "A tracker is sent late",
     .why = "The video has already passed the next milestone, so the server counts views that did not happen",
     .cure = "use a video of at least four seconds: its position is checked once a second",
     .of_session = tracker_late},
    {.id = "null-in-address",
     .severity = Severity::Warning,
     .title = "An address is sent with an absent value",
     .why = "The server receives \"(null)\" as a value",
     .cure = "let the host set the value, or leave out the macro",
     .of_session = null_in_address},
    {.id = "address-not-encoded",
     .severity = Severity::Warning,
     .title = "An address is sent with characters that it must not contain",
     .why = "Servers and proxies reject it or cut it off",
     .cure = "percent-encode the character, for example a blank as %20",
     .of_session = address_not_encoded},
    {.id = "http-beside-https",
     .severity = Severity::Warning,
     .title = "http: beside https:",
     .why = "Everyone on the way can read and change it, and hosts refuse it",
     .cure = "write https:",
     .of_ad = http_beside_https},
    {.id = "page-listens-in-vain",
     .severity = Severity::Warning,
     .title = "The page listens to an event that does not exist",
     .why = "Its listener is never called",
     .cure = "use the names of docs/creative.md, sections Events and MRAID",
     .of_ad = page_listens_in_vain},
    {.id = "event-never-sent",
     .severity = Severity::Warning,
     .title = "The page listens to an event that the ad never sends",
     .why = "Its listener is never called",
     .cure = "give the ad a video, of at least a second for video_timeupdate, or do without the event",
     .of_session = event_never_sent},
    {.id = "video-proportions",
     .severity = Severity::Warning,
     .title = "The video has other proportions than the ad says",
     .why = "The video gets black edges or is cut",
     .cure = "set fVideoWidth and fVideoHeight to the video's size",
     .of_ad = video_proportions},
    {.id = "media-file-contradicted",
     .severity = Severity::Warning,
     .title = "A media file is not what its tag says",
     .why = "Players choose a file by its size and bitrate, and report progress by the duration",
     .cure = "correct the attributes of the MediaFile and the Duration, or name the right file",
     .of_ad = media_file_contradicted},
    {.id = "unknown-key",
     .severity = Severity::Warning,
     .title = "A key or value has no effect",
     .why = "It is misspelt, of the wrong type, or behind the end of the video",
     .cure = "correct it or leave it out; docs/ad-file.md lists what there is",
     .of_ad = unknown_key},
    {.id = "control-in-unsafe-area",
     .severity = Severity::Note,
     .title = "A control lies below the camera, a corner or a bar",
     .why = "The viewer can hardly see or touch it",
     .cure = "choose another layout",
     .of_session = control_in_unsafe_area,
     .about_layout = true},
    {.id = "setting-without-effect",
     .severity = Severity::Note,
     .title = "A setting has no effect in this ad",
     .why = "Who reads the ad expects something that does not happen",
     .cure = "leave it out, or change what takes its place",
     .of_ad = setting_without_effect},
    {.id = "tag-ignored",
     .severity = Severity::Note,
     .title = "An element of a tag has no effect",
     .why = "What the tag asks for does not happen",
     .cure = "leave it out, or offer what the player supports; see docs/vast.md",
     .of_session = tag_ignored},
    {.id = "main-thread-blocked",
     .severity = Severity::Note,
     .title = "A slow icon server blocks the application",
     .why = "The icon is fetched while the ad opens, and the application waits for it",
     .cure = "serve the icon from a fast server near the viewer, or leave it out",
     .of_session = main_thread_blocked},
});

constexpr auto ExemptionTable = std::to_array<Exemption>({
    {"timers-outlive-close",
     "The timers that wait for buffering and for loading run on after a close, to their own end"},
    {"quartiles-on-replay", "A replay sends the milestones again"},
    {"heartbeats", "The heartbeat is sent at every interval"},
    {"controls-of-44-points", "Controls of 44 points in landscape are large enough"},
    {"volume-restored", "The close sets the volume back to what it was before the ad"},
    {"one-second-late",
     "The position is checked once a second, so a milestone is sent up to a second late, and one that "
     "was passed less than a second before a close is not sent"},
    {"paused-countdown", "The countdown of the close button rests while the viewer pauses the video"},
    {"away-from-the-ad",
     "Time that the viewer spends in another application or on a screen over the ad does not count"},
    {"in-a-call", "A call takes the screen: what it covers or empties does not count until it ends"},
    {"sideways-without-landscape", "An ad without a landscape arrangement that is held sideways lays its bars out for "
                                   "the long edge; only its close button is examined"},
    {"layout-of-every-ad", "A fault of the layout that every arrangement has on a device is the controller's"},
});

} // namespace

std::span<const Exemption> exemptions()
{
    return ExemptionTable;
}

std::string_view name_of(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return "note";
    case Severity::Warning:
        return "warning";
    case Severity::Error:
        break;
    }
    return "error";
}

std::span<const Rule> rules()
{
    return Table;
}

const Rule* rule_named(std::string_view id)
{
    const auto* found = std::ranges::find(Table, id, &Rule::id);
    return found == Table.end() ? nullptr : found;
}

} // namespace qoro
