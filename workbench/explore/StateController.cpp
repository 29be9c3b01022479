#include "workbench/explore/StateReader.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"
#include "kit/RefusalLog.h"

#include <array>
#include <string_view>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;
using Super = QoroPhoneGapViewController;

/// A field that holds a plain value.
template <typename Class>
struct Plain {
    std::string_view name;
    void (*add)(StateWriter& out, std::string_view name, const Class& object);
};

template <typename Class, auto field>
void add_field(StateWriter& out, std::string_view name, const Class& object)
{
    out.add(name, object.*field);
}

#define QORO_PLAIN(Class, field)                                                                                       \
    Plain<Class>                                                                                                       \
    {                                                                                                                  \
#field, add_field < Class, &Class::field>                                                                      \
    }

// Every field of the controller is in one of these tables, among the views, or named here with the reason why it is
// left out:
//   _delegate                  set by the host before the ad opens, and never read
//   arrayVideoState            the same in every session
//   absentAd_                  writes to it are discarded
//   the timers                 as the queue, with the fields that refer to it (timers())
// musicPlayer, parentControllerView and the screens count by their presence: they have no state of their own, or it is
// read where it is kept.

constexpr std::array ControllerFields{
    QORO_PLAIN(Controller, videoState),
    QORO_PLAIN(Controller, qoroMoviePlayerStatus),
    QORO_PLAIN(Controller, bIsPlay),
    QORO_PLAIN(Controller, bIsLoaded),
    QORO_PLAIN(Controller, bIsPlayFinish),
    QORO_PLAIN(Controller, bIsInitVideoBeginStep),
    QORO_PLAIN(Controller, bPlayNextVideo),
    QORO_PLAIN(Controller, fVideoStopTime),
    QORO_PLAIN(Controller, fTotalTime),
    QORO_PLAIN(Controller, prePauseStatusDict),
    QORO_PLAIN(Controller, fDefaultVolume),
    QORO_PLAIN(Controller, bIsMute),
    QORO_PLAIN(Controller, fScreenWidth),
    QORO_PLAIN(Controller, fScreenHeight),
    QORO_PLAIN(Controller, fVideoWidth),
    QORO_PLAIN(Controller, fVideoHeight),
    QORO_PLAIN(Controller, fPortraitModeVideoPosY),
    QORO_PLAIN(Controller, changeModeOrientation),
    QORO_PLAIN(Controller, currentOrientation),
    QORO_PLAIN(Controller, bIsPortraitOnly),
    QORO_PLAIN(Controller, bIsPortraitNow),
    QORO_PLAIN(Controller, bOnlyOneSideVideo),
    QORO_PLAIN(Controller, bIsVideoOrientationLandscape),
    QORO_PLAIN(Controller, bHideVideoToShowWebViewInLandscapeMode),
    QORO_PLAIN(Controller, bHideVideoToShowWebViewInPortraitMode),
    QORO_PLAIN(Controller, bIsLockLandscapeAndEnterLandscapeLeft),
    QORO_PLAIN(Controller, _bIsLockLandscapeAndEnterLandscapeLeft),
    QORO_PLAIN(Controller, bDefaultStatusBarHidden),
    QORO_PLAIN(Controller, bIsStopProgreeebar),
    QORO_PLAIN(Controller, bIsHideControlbutton),
    QORO_PLAIN(Controller, iShowProgressWheel),
    QORO_PLAIN(Controller, bIsUseVideoCustomClose),
    QORO_PLAIN(Controller, dicSendTrackingState),
    QORO_PLAIN(Controller, bUseVASTTracking),
    QORO_PLAIN(Controller, buttonPosMode),
    QORO_PLAIN(Controller, dicButtonOneActionInfo),
    QORO_PLAIN(Controller, dicButtonTwoActionInfo),
    QORO_PLAIN(Controller, bDoButtonAction),
    QORO_PLAIN(Controller, _bDoButtonAction),
    QORO_PLAIN(Controller, bIsOpenInAppApplication),
    QORO_PLAIN(Controller, _bIsOpenInAppApplication),
    QORO_PLAIN(Controller, bGoOutApp),
    QORO_PLAIN(Controller, miWatchDog),
    QORO_PLAIN(Controller, isShowMI),
};

/// Those that count time.
constexpr std::array ControllerCounters{
    QORO_PLAIN(Controller, iCountdownCount),
    QORO_PLAIN(Controller, iBufferingSufferTime),
};

// Left out of the superclass: the delegates, rootViewController, qoroBanner, allowedInterfaceOrientations, AdType, the
// identities, strMRAID2Expanded, bUseAutoRotate, bCanOrientation and instSendImpPolicy, which the host sets before the
// ad opens; extras_, which has no state.
constexpr std::array SuperFields{
    QORO_PLAIN(Super, strBaseUrl),
    QORO_PLAIN(Super, fDefaultPosY),
    QORO_PLAIN(Super, bIsFullScreen),
    QORO_PLAIN(Super, bIsVideoViewController),
    QORO_PLAIN(Super, bIsAddOnWindow),
    QORO_PLAIN(Super, bIsTwoPartExpand),
    QORO_PLAIN(Super, bIsUseCustomClose),
    QORO_PLAIN(Super, bIsUseProgressbar),
    QORO_PLAIN(Super, dicEventListener),
    QORO_PLAIN(Super, bIsClickCloseButton),
    QORO_PLAIN(Super, bIsLockOneSide),
    QORO_PLAIN(Super, bIsLockOneSideAndIsLandscape),
    QORO_PLAIN(Super, bIsLockOneSideAndIsPortrait),
    QORO_PLAIN(Super, bIsMoreThaniOS8),
};

/// Those that the controller writes: by its setters, and dicProgressTrackingUrls in place. The others are the same in
/// every session of an ad.
constexpr std::array AdFields{
    QORO_PLAIN(QoroVideoAd, portraitModeType),
    QORO_PLAIN(QoroVideoAd, bIsWebViewInFront),
    QORO_PLAIN(QoroVideoAd, bIsHideFullPortraitVideoAtEnd),
    QORO_PLAIN(QoroVideoAd, bIsHideLandscapeVideoAtEnd),
    QORO_PLAIN(QoroVideoAd, arrayButtonsInfo),
    QORO_PLAIN(QoroVideoAd, arrayReplayTrackingUrls),
    QORO_PLAIN(QoroVideoAd, bIsAutoClose),
    QORO_PLAIN(QoroVideoAd, dicTrackingUrls),
    QORO_PLAIN(QoroVideoAd, dicProgressTrackingUrls),
    QORO_PLAIN(QoroVideoAd, strVideoTrackingUrl),
    QORO_PLAIN(QoroVideoAd, strVideoUrl),
    QORO_PLAIN(QoroVideoAd, arrayPrePauseLocations),
    QORO_PLAIN(QoroVideoAd, strMIUrl),
};

#undef QORO_PLAIN

} // namespace

void StateReader::controller()
{
    out_.add("held", simulation_.holds_controller());
    out_.add("living", ad_ != nullptr);
    if (!ad_)
        return;
    for (const Plain<Controller>& field : ControllerFields)
        field.add(out_, field.name, *ad_);
    if (whole_)
        for (const Plain<Controller>& field : ControllerCounters)
            field.add(out_, field.name, *ad_);
    for (const ViewField& field : view_fields())
        view(field.name, field.get(*ad_).node().get());
    view("progressbar", ad_->progressbar_.node().get());
    view("closeButton", ad_->close_button_.lock().get());
    out_.add("playerOfAd", place(static_cast<SimulatedPlayer*>(ad_->qoroMoviePlayer.engine()), players_));
    out_.add("playerOfController",
             place(static_cast<SimulatedPlayer*>(ad_->playerViewController.moviePlayer().engine()), players_));
    out_.add("playerAddress", ad_->qoroMoviePlayer.contentURL());
    out_.add("musicPlayer", static_cast<bool>(ad_->musicPlayer));
    out_.add("parent", ad_->parentControllerView != nullptr);
    screen("ad", ad_.get());
    superclass(*ad_);
    if (ad_->qoroVideoAdInfo)
        for (const Plain<QoroVideoAd>& field : AdFields)
            field.add(out_, field.name, *ad_->qoroVideoAdInfo);
    else
        out_.add("ad", false);
}

void StateReader::superclass(const Super& super)
{
    for (const Plain<Super>& field : SuperFields)
        field.add(out_, field.name, super);
    out_.add("closer", super.closer_);
    out_.add("hasClosed", super.has_closed_);
    out_.add("repeatsCustomClose", super.repeats_custom_close_);
    out_.add("layoutDue", super.layout_due_ != 0);
    budget("messages", *super.messages_);
    limit("refusals", super.refusals_->lines_);
    limit("reports", *super.reports_);
    out_.add("mraid", super.mraid_ != nullptr);
    if (super.mraid_)
        mraid(*super.mraid_);
    out_.add("controlWatch", super.control_watch_ != nullptr);
    if (super.control_watch_)
        control_watch(*super.control_watch_);
    out_.add("guard", super.close_guard_ != nullptr);
    if (super.close_guard_)
        guard(*super.close_guard_);
}

} // namespace qoro
