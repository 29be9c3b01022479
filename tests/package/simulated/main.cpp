#include <qoro/OpenedAd.h>
#include <qoro/Simulator.h>

#include <iostream>

int main()
{
    qoro::World world;
    world.video.duration = 10;
    qoro::Simulator simulator(world);
    const auto ad = std::make_shared<qoro::QoroVideoAd>();
    ad->strVideoUrl = "http://ad/v.mp4";
    ad->fVideoWidth = 1280;
    ad->fVideoHeight = 720;
    ad->portraitModeType = qoro::ONLY_VIDEO;
    ad->bIsAutoStart = true;
    ad->bIsAutoClose = true;
    const qoro::OpenedAd opened(simulator.platform(), ad, [](const qoro::AdOutcome& outcome) {
        std::cout << "The ad was " << words_for(outcome.end) << ", of " << outcome.videos[0].duration.value_or(0)
                  << " s it played " << outcome.videos[0].played << " s\n";
    });
    simulator.run_until(60);
}
