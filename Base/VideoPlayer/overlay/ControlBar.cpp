#include "Base/VideoPlayer/QoroVideoWebViewController.h"

namespace qoro
{

namespace
{
/// Time without a touch after which the bars hide.
constexpr double HideControlSeconds = 3.0;
} // namespace

void QoroVideoWebViewController::setControlBottonInVisible(bool hidden)
{
    viewBottomBackground.setHidden(hidden);
    viewTopBackground.setHidden(hidden);
    // After the end only the replay button is shown.
    btnPlayAndPause.setHidden(bIsPlayFinish || hidden);
    bIsHideControlbutton = hidden;
}

void QoroVideoWebViewController::setControlBottonToVisible()
{
    setControlBottonInVisible(false);
    if (!bIsPlayFinish)
        addTimerToHideControlButton();
}

void QoroVideoWebViewController::setControlButtonHide()
{
    // A paused video keeps its bars.
    if (bIsPlay && !bIsPlayFinish)
        setControlBottonInVisible(true);
}

void QoroVideoWebViewController::addTimerToHideControlButton()
{
    stopTimerWith(timerSetControllerButtonHide);
    timerSetControllerButtonHide = nullptr;
    timerSetControllerButtonHide = NSTimer::scheduledTimerWithTimeInterval(
        HideControlSeconds, action<&QoroVideoWebViewController::setControlButtonHide>(this, "setControlButtonHide"),
        false);
}

void QoroVideoWebViewController::setControllerBarHiddenState()
{
    if (!bIsPlayFinish)
        setControlBottonToVisible();
}

} // namespace qoro
