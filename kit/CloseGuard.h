#pragma once

#include "kit/CloseGuardTimes.h"
#include "kit/VideoMotion.h"
#include "platform/Foundation.h"
#include "platform/Platform.h"
#include "platform/UIKit.h"

#include <memory>
#include <optional>
#include <string_view>

namespace qoro
{

class QoroPhoneGapViewController;

/// Lets the viewer close an ad that offers no working close control: a close button in a window above the ad. Does not
/// modify the controller. Once shown, the button stays. A tap on it closes the ad, even if the ad's first close only
/// hides the video.
///
/// The guard emits its actions as events. Delays start anew when the viewer returns to the
/// application or from a screen of the kit, which has a close button of its own. Main thread only.
class CloseGuard : public Object
{
public:
    /// Creates a guard and starts watching the ad.
    /// @param ad reports to the guard while both exist
    static std::shared_ptr<CloseGuard> create(const std::shared_ptr<QoroPhoneGapViewController>& ad,
                                              const CloseGuardTimes& times);
    ~CloseGuard() override;
    CloseGuard(const CloseGuard&) = delete;
    CloseGuard& operator=(const CloseGuard&) = delete;

    /// The page received a tap on the close button.
    void page_took_close_tap();
    /// The page's script started or stopped responding.
    void page_responds(bool responds);
    /// Whether the guard's button is shown.
    bool is_shown() const { return static_cast<bool>(window_); }
    /// The guard's button; null while it is not shown.
    const UIButton& button() const { return button_; }

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    CloseGuard(const std::shared_ptr<QoroPhoneGapViewController>& ad, const CloseGuardTimes& times);

    struct Living;
    struct PostedLook;

    void start();
    void look();
    void look_later();
    double until_next_look() const;
    void look_at(QoroPhoneGapViewController& ad);
    void watch_page(QoroPhoneGapViewController& ad, bool watch);
    bool is_over() const;
    bool is_on_screen() const;
    bool can_be_left() const;
    bool video_is_hidden() const;
    void show(std::string_view why);
    void hide();
    void lay_out();
    void tapped();
    void device_turned(const NSNotification& notification);
    void went_to_background();
    void came_back();

    /// The ad; null once it is being destroyed. For calls that cannot destroy it.
    QoroPhoneGapViewController* ad() const { return held_ad_.expired() ? nullptr : ad_; }

    Platform& platform_;
    const std::weak_ptr<QoroPhoneGapViewController> held_ad_;
    QoroPhoneGapViewController* const ad_;
    Living& living_;
    const std::size_t serial_; // among those of the platform
    const CloseGuardTimes times_;
    std::unique_ptr<ViewWatch> watch_;
    TimerId timer_ = 0;
    bool looks_ = false;
    bool in_background_ = false;
    bool watches_page_ = false;
    bool page_responds_ = true;

    // When each condition began, in seconds of the main loop; absent while it does not hold.

    std::optional<double> page_silent_;
    /// The ad's own close button is due but absent, because the page draws the close control.
    std::optional<double> control_owed_;
    /// A close tap was passed to the page and has had no effect so far.
    std::optional<double> tapped_;
    bool video_hidden_at_tap_ = false;
    /// The video has played its whole length without reporting its end.
    std::optional<double> end_owed_;
    VideoMotion motion_;

    UIWindow window_;
    UIButton button_;
    /// Rotation of the device relative to the viewer, in radians, clockwise.
    double turn_ = 0;
};

} // namespace qoro
