#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/SharedFrom.h"

#include <memory>

namespace qoro
{

namespace
{
/// The mute toggle that fetches the image.
constexpr std::int64_t FetchAt = 3;
/// The mute toggle that reveals it.
constexpr std::int64_t ShowAt = 8;
} // namespace

void QoroVideoWebViewController::_createMI()
{
    miImageView = UIImageView::create();
    miImageView.setContentMode(UIViewContentModeScaleAspectFit);
    miImageView.setBackgroundColor(UIColor::blackColor());
    miImageView.setUserInteractionEnabled(true);
    miImageView.setHidden(true);
}

void QoroVideoWebViewController::_prepareMI()
{
    if (!verifyWebUrlWithString(ad().strMIUrl))
        return;
    ++miWatchDog;
    if (miWatchDog == FetchAt) {
        const std::weak_ptr<QoroVideoWebViewController> weakSelf = sharedFrom(this);
        dataWithContentsOfURLInBackground(NSURL::URLWithString(ad().strMIUrl), FetchPurpose::HiddenImage,
                                          [weakSelf](const NSData& data) {
                                              if (const auto self = weakSelf.lock())
                                                  self->miImageView.setImage(UIImage::imageWithData(data));
                                          });
    }
    if (miWatchDog >= ShowAt) {
        // Clearing the address ends the counting.
        ad().setStrMIUrl(nullptr);
        isShowMI = true;
        checkVideoSize();
    }
}

void QoroVideoWebViewController::_HailMI(const CGRect& frame, bool Portrait)
{
    if (Portrait)
        miImageView.setTransform(CGAffineTransformMakeRotation(0));
    else if (!(bIsLockOneSideAndIsLandscape && bIsMoreThaniOS8))
        miImageView.setTransform(CGAffineTransformMakeRotation(
            getDeviceOriengation() == UIDeviceOrientationLandscapeRight ? -QuarterTurn : QuarterTurn));
    miImageView.setFrame(frame);
    if (isShowMI) {
        miImageView.setHidden(false);
        setVideoPause();
        setCloseButtonAction(btnClose);
        addVideoCloseButton();
    }
}

} // namespace qoro
