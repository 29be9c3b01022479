#include "Base/VideoPlayer/ControlButtons.h"
#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "Base/VideoPlayer/VideoImage/EmbeddedImage.h"
#include "Base/VideoPlayer/VideoImage/VideoImage.h"
#include "Base/VideoPlayer/layout/Frames.h"

#include <span>

namespace qoro
{

namespace
{

constexpr double TopBarHeight = 70.0;
constexpr double BrandTextY = 5.0;

CGSize measuredTitle(const UIButton& button)
{
    return sizeWithFont(button.title(), button.titleLabel().font(), TextBox);
}

} // namespace

void QoroVideoWebViewController::setButtonBarToScreen(bool bIsPlayNextVideo)
{
    if (ad().strBrandIconUrl)
        btnBrandIcon.setBackgroundImage(UIImage::imageWithData(
            dataWithContentsOfURL(NSURL::URLWithString(ad().strBrandIconUrl), FetchPurpose::BrandIcon)));
    else
        btnBrandIcon.setHidden(true);
    if (ad().strBrandText) {
        labelBrandText.setText(ad().strBrandText);
        const CGSize text = sizeWithFont(labelBrandText.text(), labelBrandText.font(), TextBox);
        const CGSize screen = getCurrnetScreenSize();
        const float x = brandTextX(static_cast<float>(screen.width), static_cast<float>(screen.height));
        labelBrandText.setFrame({x, BrandTextY, text.width, text.height});
    } else {
        labelBrandText.setHidden(true);
    }

    viewTopBackground.setBackgroundColor(UIColor::clearColor());
    viewBottomBackground.setBackgroundColor(UIColor::clearColor());
    viewButtonBackground.setBackgroundColor(UIColor::clearColor());
    imgTopBackgroundColor.setImage(embeddedImage(arrayTopBackGround));
    imgBottomBackgroundColor.setImage(embeddedImage(arrayBottomBackGround));
    viewTopBackground.addSubview(imgTopBackgroundColor);
    viewTopBackground.addSubview(viewButtonBackground);
    viewTopBackground.addSubview(btnBrandIcon);
    viewTopBackground.addSubview(labelBrandText);
    viewBottomBackground.addSubview(imgBottomBackgroundColor);
    for (const ControlButton& row : controlButtons())
        if (row.place == ControlButton::Place::BottomBar)
            viewBottomBackground.addSubview(this->*row.field);

    if (!bIsPlayNextVideo)
        btnClose.setHidden(true);
    addActionButton();
    viewTopBackground.removeFromSuperview();
    viewBottomBackground.removeFromSuperview();
    const UIView player = qoroMoviePlayer.view();
    player.addSubview(viewTopBackground);
    player.addSubview(viewBottomBackground);
    btnReplay.setHidden(true);
    for (const ControlButton& row : controlButtons())
        if (row.place == ControlButton::Place::Middle)
            player.addSubview(this->*row.field);
    btnClose.removeFromSuperview();
    if (!ad().bIsHideActionButton) {
        viewButtonBackground.removeFromSuperview();
        player.addSubview(viewButtonBackground);
    }
    webView().addSubview(btnReturnToVideo);
}

void QoroVideoWebViewController::setButtonPosition()
{
    const double side = controlSize(bIsPortraitNow);
    const CGSize screen = getCurrnetScreenSize();
    const VideoArea area = videoArea({
        .lockOneSide = bIsLockOneSide,
        .lockOneSideAndIsLandscape = bIsLockOneSideAndIsLandscape,
        .moreThaniOS8 = bIsMoreThaniOS8,
        .portraitNow = bIsPortraitNow,
        .fullScreen = bIsFullScreen,
        .orientation = currentOrientation,
        .videoPosition = ad().portraitVideoPos,
        .videoWidth = ad().fVideoWidth,
        .videoHeight = ad().fVideoHeight,
        .screenWidth = static_cast<float>(screen.width),
        .screenHeight = static_cast<float>(screen.height),
    });
    const double across = area.across;
    const double down = area.down;

    const CGRect middle{(across - side) * 0.5, (down - side) * 0.5, side, side};
    for (const ControlButton& row : controlButtons())
        if (row.place == ControlButton::Place::Middle)
            (this->*row.field).setFrame(middle);
    qoroMoviePlayer.view().bringSubviewToFront(btnPlayAndPause);
    viewTopBackground.setFrame({0, 0, across, TopBarHeight});
    viewBottomBackground.setFrame({0, down - side, across, side});
    imgTopBackgroundColor.setFrame({0, 0, across, side});
    imgBottomBackgroundColor.setFrame({0, 0, across, side});
    int taken = 0;
    const std::span<const ControlButton> rows = controlButtons();
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        if (row->place != ControlButton::Place::BottomBar)
            continue;
        const UIButton& button = this->*row->field;
        button.setFrame({across - (taken + 1) * side, 0, side, side});
        taken += button.isHidden() ? 0 : 1;
    }

    const bool twoButtons = buttonPosMode == ButtonPositionMode_TwoButton;
    if (buttonPosMode != 0 && btnActionOne.title()) {
        const auto titleTwo = twoButtons ? std::optional(measuredTitle(btnActionTwo)) : std::nullopt;
        const ActionPanel panel = titledPanel(measuredTitle(btnActionOne), titleTwo, across);
        if (twoButtons)
            btnActionTwo.setFrame(panel.buttonTwo);
        btnActionOne.setFrame(panel.buttonOne);
        viewButtonBackground.setFrame(panel.panel);
    } else if (buttonPosMode != 0) {
        btnActionOne.setFrame({0, 0, side, side});
        if (twoButtons)
            btnActionTwo.setFrame({side + 10.0, 0, side, side});
        const CGRect buttonOne = btnActionOne.frame();
        viewButtonBackground.setFrame(picturePanel({buttonOne.width, buttonOne.height}, twoButtons, side));
    }

    btnReturnToVideo.setFrame({across - side, 0, side, side});
    btnReturnToVideo.setHidden(true);
    if (!bIsPortraitNow && ad().landscapeModeType == VIDEO_AND_WEBVIEW && ad().bShowHideVideoBtn &&
        !ad().bIsWebViewInFront)
        btnReturnToVideo.setHidden(false);

    // A full-screen portrait video seen sideways: its long edge is the area's height.
    if (ad().portraitVideoPos == FULL && !bIsLockOneSideAndIsPortrait &&
        (bIsLockOneSide || isLandscape(currentOrientation))) {
        const CGRect top = viewTopBackground.frame();
        viewTopBackground.setFrame({0, 0, top.width, top.height});
        const CGRect bottom = viewBottomBackground.frame();
        viewBottomBackground.setFrame({0, across - bottom.height, bottom.width, bottom.height});
        viewButtonBackground.setFrame(sidewaysPanel(measuredTitle(btnActionOne), down));
        btnPlayAndPause.setCenter({down * 0.5, across * 0.5});
        btnReplay.setCenter({down * 0.5, across * 0.5});
        const CGRect mute = btnMute.frame();
        btnMute.setFrame({down - mute.width, 0, mute.width, mute.height});
    }
}

} // namespace qoro
