#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/webbridge/EventNames.h"

namespace qoro
{

void QoroVideoWebViewController::addEventListener(const NSString& name, const Value& EventId,
                                                  const Value& successCallBack)
{
    QoroPhoneGapViewController::addEventListener(name, EventId, successCallBack);

    // Send the current state again for a late listener.
    if (name.isEqualToString("video_loading") && videoState == VideoLoading)
        changeVideoState(VideoLoading);
    if (name.isEqualToString("video_loaded") && videoState == VideoLoaded)
        changeVideoStateToLoaded();
    // Resets the state to VideoPlay even when paused or ended, so that the listener learns that playback has started.
    if (name.isEqualToString("video_play") && videoState >= VideoPlay)
        changeVideoState(VideoPlay);
    if (name.isEqualToString("video_volumechange") && videoState >= VideoPlay)
        volumeChanged();
    if (name.isEqualToString("video_orientation") && videoState >= VideoPlay)
        sendOrientationEvent();
    if (name.isEqualToString("video_visibilitychange"))
        sendVideoVisibilityEvent();
    if (name.isEqualToString("onclick_closebtn")) {
        bIsClickCloseButton = true;
        setCloseButtonAction(btnClose);
    }
}

std::int32_t QoroVideoWebViewController::removeEventListener(const NSString& name, const Value& EventId)
{
    const std::int32_t removed = QoroPhoneGapViewController::removeEventListener(name, EventId);
    if (name.isEqualToString("onclick_closebtn")) {
        bIsClickCloseButton = false;
        setCloseButtonAction(btnClose);
    }
    return removed;
}

void QoroVideoWebViewController::sendEventToJS(const NSString& event, const NSDictionary& withResult)
{
    if (withResult) {
        NSMutableDictionary data{{"e", withResult}};
        listenerCallbackToJS(event, data);
        data.removeAllObjects();
    } else {
        listenerCallbackToJS(event, nullptr);
    }
}

void QoroVideoWebViewController::sendEventToJS(const NSString& event, std::string_view key, Value value)
{
    NSMutableDictionary data = eventData_.wrapped(key, std::move(value));
    listenerCallbackToJS(event, data);
    if (data.count_of_handles() > 2) // a listener retains it
        data.removeAllObjects();
}

void QoroVideoWebViewController::sendOrientationEvent()
{
    sendEventToJS(event_names::VideoOrientation, "orientation",
                  bIsVideoOrientationLandscape ? "landscape" : "portrait");
}

void QoroVideoWebViewController::sendVideoVisibilityEvent()
{
    const bool hidden = bHideVideoToShowWebViewInLandscapeMode || bHideVideoToShowWebViewInPortraitMode;
    sendEventToJS(event_names::VideoVisibilityChange, "visibility", hidden ? 0 : 1);
}

} // namespace qoro
