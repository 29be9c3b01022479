#include "workbench/explore/StateHash.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"
#include "kit/CloseGuard.h"
#include "kit/ControlWatch.h"
#include "kit/Mraid.h"
#include "kit/RefusalLog.h"
#include "kit/RequestLimit.h"
#include "platform/QoroAdManager.h"
#include "simulator/Simulation.h"
#include "views/ViewNode.h"
#include "workbench/explore/StateWriter.h"

#include <algorithm>
#include <array>
#include <limits>
#include <map>
#include <typeinfo>
#include <vector>

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

struct TimerField {
    std::string_view name;
    NSTimer Controller::*field;
};

constexpr std::array TimerFields{
    TimerField{"timerCheckDeviceOrientation", &Controller::timerCheckDeviceOrientation},
    TimerField{"timerUpdateRemainderTime", &Controller::timerUpdateRemainderTime},
    TimerField{"timerCloseBtnCountdown", &Controller::timerCloseBtnCountdown},
    TimerField{"timerBufferSufferTime", &Controller::timerBufferSufferTime},
    TimerField{"timerCheckVideoPlay", &Controller::timerCheckVideoPlay},
    TimerField{"timerSendTrackingToServer", &Controller::timerSendTrackingToServer},
    TimerField{"timerSetControllerButtonHide", &Controller::timerSetControllerButtonHide},
    TimerField{"timerVideoLoaded", &Controller::timerVideoLoaded},
};

/// Seconds after which a control watch has forgotten when it called.
constexpr double ControlWatchMemory = 1;

template <typename Object>
std::string_view type_name(const Object* object)
{
    return object ? typeid(*object).name() : "none";
}

} // namespace

/// Reads a state part by part. Has access to the private members of the classes that keep a part of it.
class StateReader
{
public:
    StateReader(Simulation& simulation, StateWriter& out, StateDetail detail)
        : simulation_(simulation), platform_(simulation.platform()), out_(out), whole_(detail == StateDetail::Whole),
          ad_(simulation.living())
    {
    }

    /// @return whether all of the state could be read
    bool read()
    {
        engines();
        windows();
        controller();
        collaborators();
        observers();
        device();
        if (whole_)
            queue();
        return known_;
    }

private:
    void time_counts() { out_.add("time", platform_.loop().now_microseconds()); }

    // ------------------------------------------------------------------------------------------------------- engines

    void engines()
    {
        for (SimulatedPlayer* each : platform_.players_.players_)
            if (each)
                players_.push_back(each);
        for (SimulatedWebEngine* each : platform_.web_engines_.engines_)
            if (each)
                pages_.push_back(each);
        out_.add("players", players_.size());
        for (const SimulatedPlayer* each : players_)
            player(*each);
        out_.add("pages", pages_.size());
        for (const SimulatedWebEngine* each : pages_)
            page(*each);
    }

    void player(const SimulatedPlayer& player)
    {
        out_.add("player.source", player.has_source_);
        // The setup that it follows, by the address of its video; empty for the common one.
        std::string_view video;
        for (const auto& [address, setup] : platform_.world_.videos)
            if (&setup == &player.video_)
                video = address;
        out_.add("player.video", video);
        out_.add("player.autoplay", player.settings_.should_autoplay);
        out_.add("player.scaling", player.settings_.scaling_mode);
        out_.add("player.fullscreen", player.settings_.fullscreen);
        out_.add("player.controls", player.settings_.control_style);
        out_.add("player.repeat", player.settings_.repeat_mode);
        out_.add("player.sourceType", player.settings_.source_type);
        out_.add("player.duration", player.duration_);
        out_.add("player.load", player.load_state_);
        out_.add("player.state", player.playback_state_);
        out_.add("player.ready", player.ready_);
        out_.add("player.wantsPlay", player.wants_play_);
        out_.add("player.ended", player.ended_);
        out_.add("player.stalled", player.stalled_);
        out_.add("player.failed", player.failed_);
        out_.add("player.failedForGood", player.failed_for_good_);
        out_.add("player.vainPlays", player.vain_plays_);
        out_.add("player.stallsDone", player.stalls_done_.size());
        for (const bool done : player.stalls_done_)
            out_.add("player.stallsDone", done);
        if (!whole_)
            return;
        const MediaTime position = player.position();
        out_.add("player.position", position.microseconds_since(MediaTime()));
        out_.add("player.position", position.seconds());
        out_.add("player.manualTime", player.manual_time_);
        out_.add("player.ahead", player.ahead_timer_ != 0);
        if (player.ahead_timer_ != 0) {
            out_.add("player.ahead", player.ahead_);
            out_.add("player.aheadAt", player.ahead_at_.seconds());
            out_.add("player.aheadStall", player.ahead_stall_);
        }
    }

    void page(const SimulatedWebEngine& page)
    {
        out_.add("page.address", page.address_);
        out_.add("page.loading", page.loading_);
        out_.add("page.content", page.has_content_);
        out_.add("page.fault", page.fault_.has_value() ? static_cast<int>(*page.fault_) : -1);
        out_.add("page.watched", page.watched_);
        out_.add("page.silent", page.silent_);
        out_.add("page.visited", page.visited_.size());
        for (const NSURL& address : page.visited_)
            out_.add("page.visited", address);
        out_.add("page.place", page.place_);
        out_.add("page.byAddress", page.by_address_);
    }

    /// Place among those alive; their serial numbers only count how many there have been.
    template <typename Engine, typename List>
    static std::ptrdiff_t place(const Engine* engine, const List& alive)
    {
        return engine ? std::ranges::find(alive, engine) - alive.begin() : -1;
    }

    // --------------------------------------------------------------------------------------------------------- views

    void windows()
    {
        auto& list = platform_.shared<WindowList>();
        auto all = list.all();
        out_.add("windows", all.size());
        for (const auto& window : all)
            view("window", window.get());
        // The order in which they were made key, as places.
        std::ranges::stable_sort(all, {}, [](const auto& window) { return window->shown_serial; });
        for (const auto& window : all) {
            out_.add("window.shown", window->shown_serial != 0);
            view("window.shown", window.get());
        }
    }

    /// A view: its number, and its state when it is met for the first time.
    void view(std::string_view name, const ViewNode* node)
    {
        if (!node) {
            out_.add(name, -1);
            return;
        }
        const auto [known, is_new] = numbers_.try_emplace(node, numbers_.size());
        out_.add(name, known->second);
        if (is_new)
            node_state(*node);
    }

    /// Left out: serial and revision, which the trace does not show.
    void node_state(const ViewNode& node)
    {
        out_.add("kind", node.kind);
        out_.add("hidden", node.hidden);
        // Its clock shows the time.
        const bool shows_time = node.kind == ViewNode::Kind::Label || node.kind == ViewNode::Kind::CountDown;
        if (whole_ || !shows_time) {
            out_.add("bounds", node.bounds);
            out_.add("center", node.center);
            out_.add("frame", node.frame);
            out_.add("text", node.text);
            out_.add("seconds", node.seconds);
        }
        out_.add("angle", node.angle);
        out_.add("fillsParent", node.fills_parent);
        out_.add("onResize", static_cast<bool>(node.on_resize));
        out_.add("alpha", node.alpha);
        out_.add("background", node.background);
        out_.add("opaque", node.opaque);
        out_.add("cornerRadius", node.corner_radius);
        out_.add("autoresizing", node.autoresizing_mask);
        out_.add("contentMode", node.content_mode);
        out_.add("label", node.accessibility_label);
        out_.add("takesTouches", node.takes_touches);
        out_.add("staysOnTop", node.stays_on_top);
        out_.add("image", static_cast<bool>(node.image));
        out_.add("image", node.image.accessibilityIdentifier());
        out_.add("font", std::string_view(node.font.family));
        out_.add("font", node.font.size);
        out_.add("textColor", node.text_color);
        out_.add("symbol", node.symbol);
        out_.add("shadow", node.text_shadow_color);
        out_.add("shadow", node.text_shadow_offset);
        out_.add("lineBreak", node.line_break_mode);
        out_.add("alignment", node.text_alignment);
        out_.add("lines", node.number_of_lines);
        out_.add("highlighted", node.highlighted);
        out_.add("titleShadow", node.title_shadow_color);
        out_.add("showsTouch", node.shows_touch);
        out_.add("targets", node.targets.size());
        for (const Action& target : node.targets)
            action("targets", target);
        out_.add("level", node.window_level);
        out_.add("key", node.key_window);
        out_.add("root", type_name(node.window_root.get()));
        out_.add("secondsFull", node.seconds_full);
        out_.add("ringWidth", node.ring_width);
        out_.add("volumeSlider", node.shows_volume_slider);
        out_.add("routeButton", node.shows_route_button);
        out_.add("fitsPage", node.scales_page_to_fit);
        out_.add("touched", node.page_touched);
        if (node.page_touched)
            time_counts();
        out_.add("scaling", node.scaling_mode);
        out_.add("web", place(static_cast<SimulatedWebEngine*>(node.web.get()), pages_));
        out_.add("video", place(static_cast<SimulatedPlayer*>(node.player), players_));
        if (node.window_root)
            screen("root", node.window_root.get());
        view("titleLabel", node.title_label.get());
        view("parent", node.parent);
        out_.add("subviews", node.subviews.size());
        for (const auto& subview : node.subviews)
            view("subview", subview.get());
    }

    void action(std::string_view name, const Action& action)
    {
        const auto target = action.target();
        out_.add(name, action.name());
        out_.add(name, target == nullptr ? "gone" : target == ad_ ? "ad" : type_name(target.get()));
    }

    /// A screen, whose views are in the tree.
    void screen(std::string_view name, const UIViewController* screen)
    {
        out_.add(name, type_name(screen));
        if (!screen)
            return;
        view("screen.view", screen->view().node().get());
        out_.add("screen.presents", type_name(screen->presenting_.get()));
        out_.add("screen.presenter", type_name(screen->presenter_.lock().get()));
    }

    // ---------------------------------------------------------------------------------------------------- controller

    void controller()
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

    void superclass(const Super& super)
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

    /// A budget that is full again has forgotten when it was used.
    void budget(std::string_view name, const MessageBudget& budget)
    {
        if (!whole_)
            return;
        const double now = platform_.loop().now();
        const double left = std::min(budget.at_once_, budget.left_ + (now - budget.last_) * budget.per_second_);
        out_.add(name, left == budget.at_once_);
        if (left == budget.at_once_)
            return;
        out_.add(name, budget.left_);
        out_.add(name, budget.last_);
        time_counts();
    }

    void limit(std::string_view name, const LineLimit& limit)
    {
        budget(name, limit.lines_);
        out_.add(name, limit.unreported_);
    }

    void mraid(const Mraid& mraid)
    {
        out_.add("mraid.callback", mraid.callback_);
        out_.add("mraid.sent", mraid.sent_);
        out_.add("mraid.watches", mraid.watch_ != nullptr);
        out_.add("mraid.looks", mraid.looks_);
        out_.add("mraid.background", mraid.in_background_);
        out_.add("mraid.customClose", mraid.wants_custom_close_);
        out_.add("mraid.forced", mraid.forced_.has_value());
        if (mraid.forced_) {
            out_.add("mraid.before", mraid.forced_->before);
            out_.add("mraid.now", mraid.forced_->now);
        }
    }

    void control_watch(const ControlWatch& watch)
    {
        out_.add("controlWatch.sent", watch.sent_);
        out_.add("controlWatch.looks", watch.looks_);
        out_.add("controlWatch.watches", watch.watch_ != nullptr);
        const bool recent = watch.sent_at_ && platform_.loop().now() - *watch.sent_at_ < ControlWatchMemory;
        if (whole_ && recent) {
            out_.add("controlWatch.sentAt", *watch.sent_at_);
            time_counts();
        }
        timers_[watch.timer_] = "controlWatch.timer";
    }

    void guard(const CloseGuard& guard)
    {
        timers_[guard.timer_] = "guard.timer";
        out_.add("guard.shown", guard.is_shown());
        out_.add("guard.background", guard.in_background_);
        out_.add("guard.pageResponds", guard.page_responds_);
        out_.add("guard.watchesPage", guard.watches_page_);
        view("guard.button", guard.button_.node().get());
        if (!whole_)
            return;
        out_.add("guard.looks", guard.looks_);
        out_.add("guard.pageSilent", guard.page_silent_);
        out_.add("guard.controlOwed", guard.control_owed_);
        out_.add("guard.tapped", guard.tapped_);
        out_.add("guard.hiddenAtTap", guard.video_hidden_at_tap_);
        out_.add("guard.endOwed", guard.end_owed_);
        out_.add("guard.turn", guard.turn_);
        const VideoMotion& motion = guard.motion_;
        out_.add("guard.motion", motion.player_ == (ad_ ? ad_->qoroMoviePlayer.identity() : nullptr));
        out_.add("guard.motion", motion.seeks_ == (ad_ ? ad_->qoroMoviePlayer.seekCount() : 0));
        for (const double part : {motion.position_, motion.looked_, motion.run_, motion.played_, motion.still_since_})
            out_.add("guard.motion", part);
        time_counts();
    }

    // ------------------------------------------------------------------------------------------- kit and notifications

    void collaborators()
    {
        // Where the controller is gone, the platform may be without a scope of its own.
        const PlatformScope scope(platform_);
        const QoroAdManager& manager = platform_.shared<QoroAdManager>();
        out_.add("screens", manager.extra_views_.size());
        for (const auto& each : manager.extra_views_)
            screen("extraView", each.get());
        if (ad_) {
            const auto& browser = ad_->qoroInAppWebViewController;
            screen("browser", browser.get());
            if (browser)
                out_.add("browser.open", browser->screen_ != nullptr);
            const auto& sheet = ad_->openInAppApplicationViewController;
            screen("sheet", sheet.get());
            if (sheet) {
                out_.add("sheet.page", sheet->screen_ != nullptr);
                out_.add("sheet.covered", sheet->covered_);
                out_.add("sheet.returned", sheet->has_returned_);
            }
            screen("store", ad_->qoroAppStoreMockViewController.get());
        }
        out_.add("limited", manager.limit_ != nullptr);
        if (manager.limit_ && whole_) {
            const RequestLimit& limit = *manager.limit_;
            budget("heartbeats", limit.heartbeats_);
            out_.add("requests", limit.others_);
            out_.add("unreported", limit.unreported_);
            if (limit.next_line_ > platform_.loop().now()) {
                out_.add("nextLine", limit.next_line_);
                out_.add("nextLine", std::string_view(limit.address_));
                time_counts();
            }
            timers_[limit.line_] = "requestLimit.line";
        }
    }

    void observers()
    {
        const PlatformScope scope(platform_);
        const NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
        for (const auto& each : center.registrations_) {
            // Of an observer that is gone, the centre removes the registration without effect.
            if (!each.action.target())
                continue;
            out_.add("observes", each.name);
            action("observes", each.action);
            out_.add("observes", poster(each.object));
        }
    }

    std::string_view poster(const void* object) const
    {
        if (!object)
            return "any";
        if (object == AVAudioSession::sharedInstance())
            return "audio";
        if (ad_ && object == ad_->qoroMoviePlayer.identity())
            return "player";
        if (ad_ && object == ad_->playerViewController.moviePlayer().identity())
            return "player of controller";
        // Identities are never used again, so it never posts.
        return "gone";
    }

    void device()
    {
        const SimulatedDevice& device = platform_.device();
        out_.add("orientation", device.orientation());
        out_.add("statusBar", device.status_bar_orientation());
        out_.add("statusBarHidden", device.status_bar_hidden());
        out_.add("volume", platform_.volume().value());
    }

    // --------------------------------------------------------------------------------------------------------- queue

    void queue()
    {
        const std::int64_t now = platform_.loop().now_microseconds();
        if (ad_) {
            timers_[ad_->layout_due_] = "layoutDue";
            for (const TimerField& field : TimerFields)
                timer_field(field.name, (*ad_).*field.field);
        }
        for (const VirtualLoop::Queued& each : platform_.loop().queue()) {
            // Work that is due now may be a closure without a name: the state is not at rest.
            if (each.due <= now)
                known_ = false;
            if (!work(each))
                continue;
            out_.add("due", each.due == std::numeric_limits<std::int64_t>::max() ? -1 : each.due - now);
            out_.add("interval", each.interval);
        }
    }

    /// Which of the queue's timers the field refers to; the controller stops a timer by its field.
    void timer_field(std::string_view name, const NSTimer& timer)
    {
        out_.add(name, timer.isValid());
        if (!timer.isValid())
            return;
        out_.add(name, to_microseconds(timer.fireDate()) - platform_.loop().now_microseconds());
        out_.add(name, timer.timeInterval());
        out_.add(name, timer.repeats());
    }

    /// @return false for work without effect: of an engine that is gone, or of a load that another has replaced
    bool work(const VirtualLoop::Queued& queued)
    {
        if (const Action* fires = NSTimer::action_of(*queued.work)) {
            action("timer", *fires);
        } else if (const auto* of_player = queued.work->target<SimulatedPlayer::Due>()) {
            const SimulatedPlayer* player = platform_.players_.find(of_player->serial);
            if (!player)
                return false;
            out_.add("playerEvent", of_player->event);
            out_.add("playerEvent", place(player, players_));
        } else if (const auto* of_page = queued.work->target<SimulatedWebEngine::Due>()) {
            const SimulatedWebEngine* page = platform_.web_engines_.engines_[of_page->serial];
            if (!page || page->load_ != of_page->load)
                return false;
            out_.add("pageEvent", of_page->report);
            out_.add("pageEvent", place(page, pages_));
        } else if (const auto* answer = queued.work->target<SimulatedNet::Due>()) {
            // The kind decides which operation the answer reaches.
            out_.add("answer", std::string_view(answer->address));
            out_.add("answer", answer->kind);
            out_.add("answer", std::string_view(answer->answer.target_type().name()));
        } else if (const auto known = timers_.find(queued.id); known != timers_.end()) {
            out_.add("kitTimer", known->second);
        } else {
            known_ = false;
        }
        return true;
    }

    Simulation& simulation_;
    SimulatedPlatform& platform_;
    StateWriter& out_;
    const bool whole_;
    const std::shared_ptr<Controller> ad_;
    bool known_ = true;
    std::vector<const SimulatedPlayer*> players_;
    std::vector<const SimulatedWebEngine*> pages_;
    std::map<const ViewNode*, std::size_t> numbers_;
    /// The kit's own timers, by their identity in the loop.
    std::map<TimerId, std::string_view> timers_;
};

std::optional<StateKey> state_key(Simulation& simulation, StateDetail detail, std::string_view leave_out)
{
    StateWriter out(leave_out);
    return StateReader(simulation, out, detail).read() ? std::optional(out.key()) : std::nullopt;
}

std::string state_text(Simulation& simulation)
{
    std::string text;
    StateWriter out({}, &text);
    if (!StateReader(simulation, out, StateDetail::Whole).read())
        text += "(with work that has no name)\n";
    return text;
}

} // namespace qoro
