#include <qoro/qoro.h>

#include <string>

/// Plays an ad in virtual time whose callback throws, and the next one in that callback.
/// @return how the second ad ended, or what went wrong
std::string played_ads()
{
    qoro::World world;
    world.video.duration = 10;
    qoro::Simulator simulator(world);
    const auto ad = [] {
        auto made = std::make_shared<qoro::QoroVideoAd>();
        made->strVideoUrl = "http://ad/v.mp4";
        made->fVideoWidth = 1280;
        made->fVideoHeight = 720;
        made->portraitModeType = qoro::ONLY_VIDEO;
        made->bIsAutoStart = true;
        made->bIsAutoClose = true;
        return made;
    };
    std::string ended = "not at all";
    std::unique_ptr<qoro::OpenedAd> opened;
    opened = std::make_unique<qoro::OpenedAd>(simulator.platform(), ad(), [&](const qoro::AdOutcome&) {
        opened = std::make_unique<qoro::OpenedAd>(
            simulator.platform(), ad(), [&ended](const qoro::AdOutcome& outcome) { ended = words_for(outcome.end); });
        throw std::runtime_error("a mistake of the host");
    });
    simulator.run_until(60);

    // An exception of the library crosses its border.
    try {
        qoro::read_ad_file("/nonexistent/ad.json");
    } catch (const qoro::InputError&) {
        return ended;
    }
    return "no InputError";
}
