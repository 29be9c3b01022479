#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

namespace qoro
{

namespace
{

struct Milestone {
    std::string_view name;
    /// Share of the video at which it becomes due.
    double from;
};

constexpr Milestone milestones[] = {
    {"start", -std::numeric_limits<double>::infinity()},
    {"firstQuartile", 0.25},
    {"midpoint", 0.5},
    {"thirdQuartile", 0.75},
};

/// Share of the video played, divided in single precision; 0 while the duration or the time is unknown.
double playedShare(float time, float duration)
{
    return duration > 0 && !std::isnan(time) ? static_cast<double>(time / duration) : 0.0;
}

} // namespace

void QoroVideoWebViewController::initSendTrackingState()
{
    for (const std::string& milestone : ad().dicTrackingUrls.allKeys())
        dicSendTrackingState.setObject("0", milestone);
}

void QoroVideoWebViewController::startTrackingInterval(float interval)
{
    if (timerSendTrackingToServer) {
        timerSendTrackingToServer.invalidate();
        timerSendTrackingToServer = nullptr;
    }
    stopTimerWith(timerSendTrackingToServer);
    timerSendTrackingToServer = nullptr;

    if (bUseVASTTracking) {
        timerSendTrackingToServer = NSTimer::scheduledTimerWithTimeInterval(
            1.0, action<&QoroVideoWebViewController::checkSendVideoTracking>(this, "checkSendVideoTracking"), true);
    } else {
        // NaN does not fall back to 3 s: such a timer never fires.
        const double period = interval <= 0 ? 3.0 : static_cast<double>(interval);
        timerSendTrackingToServer = NSTimer::scheduledTimerWithTimeInterval(
            period, action<&QoroVideoWebViewController::sendVideoTrackingToServer>(this, "sendVideoTrackingToServer"),
            true);
    }
}

void QoroVideoWebViewController::checkSendVideoTracking()
{
    if (!bIsPlay || ad().dicTrackingUrls.count() == 0)
        return;
    const auto time = static_cast<float>(qoroMoviePlayer.currentPlaybackTime());
    const auto duration = static_cast<float>(qoroMoviePlayer.duration());

    NSMutableDictionary offsets = ad().dicProgressTrackingUrls;
    for (const std::string& offset : offsets.allKeys()) {
        if (time >= static_cast<float>(NSString(offset).intValue())) {
            sendTrackingUrls(offsets[offset].array());
            offsets.removeObjectForKey(offset);
        }
    }

    const double share = playedShare(time, duration);
    for (const Milestone& milestone : milestones) {
        if (share >= milestone.from && dicSendTrackingState[milestone.name].intValue() == 0) {
            dicSendTrackingState.setObject("1", milestone.name);
            sendTrackingUrls(ad().dicTrackingUrls[milestone.name].array());
        }
    }
}

void QoroVideoWebViewController::sendVideoTrackingToServer()
{
    if (bIsPlay && ad().strVideoTrackingUrl)
        requestTracker(getTrackingUniqueInfo(ad().strVideoTrackingUrl), RequestPurpose::Heartbeat);
}

} // namespace qoro
