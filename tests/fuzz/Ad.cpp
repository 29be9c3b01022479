// An ad file, then a session with the ad read from it.

#include "formats/AdFile.h"
#include "tests/fuzz/FuzzSession.h"
#include "tests/fuzz/FuzzTarget.h"

#include <memory>
#include <string>

namespace qoro
{

namespace
{

/// A viewer who uses every control, on a video of four seconds.
constexpr std::string_view Viewing = R"({
    "video": {"duration": 4, "loadAfter": 0.1, "stalls": [[1, 0.2]]},
    "host": {"parent": true},
    "ad": {},
    "steps": [
        {"open": 0},
        {"at": 1.5, "snapshot": true},
        {"tap": "btnMute"},
        {"tap": "btnPlayAndPause"},
        {"tap": "btnPlayAndPause"},
        {"device": {"orientation": 3, "statusBarOrientation": 3}},
        {"at": 2, "tap": "btnScreenScale"},
        {"call": ["didRotateFromInterfaceOrientation", 1]},
        {"tap": "btnActionOne"},
        {"at": 2.5, "call": ["closeInAppWebView"]},
        {"tap": "btnActionTwo"},
        {"call": ["closeInAppApplication"]},
        {"app": "background"},
        {"at": 3, "app": "foreground"},
        {"app": "active"},
        {"script": ["setVideoPlay"]},
        {"at": 9, "snapshot": true},
        {"tap": "btnReplay"},
        {"at": 10, "tap": "btnReturnToVideo"},
        {"tap": "btnClose"},
        {"at": 11, "snapshot": true},
        {"release": true}
    ]
})";

/// The ad as the program reads it from a file; null when it is rejected.
std::shared_ptr<QoroVideoAd> read(std::string_view text, AdTypes types)
{
    try {
        return read_ad(text, "ad.json", types);
    } catch (const InputError& error) {
        fuzz::require_one_line(error);
        return nullptr;
    }
}

void ask_whether_playable(const QoroVideoAd& ad)
{
    try {
        require_playable(ad, "ad.json");
    } catch (const InputError& error) {
        fuzz::require_one_line(error);
    }
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    static const Scenario viewing = read_scenario(Viewing, "viewing");
    const auto strict = read(input, AdTypes::Strict);
    const auto ad = read(input, AdTypes::Lenient);
    require(ad || !strict, "what is read strictly is read leniently");
    if (!ad)
        return;
    ask_whether_playable(*ad);
    Scenario scenario = viewing;
    scenario.ad = ad;
    run_session(std::move(scenario));
}

} // namespace qoro
