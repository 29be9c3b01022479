#pragma once

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

/// How long the close guard waits before it shows a way out; seconds, none of them negative.
struct CloseGuardTimes {
    /// For a page that owns the way to close, and does not answer.
    double page_silent = 2;
    /// For something to come of a tap on the close button that the page has taken.
    double tap_unanswered = 1;
    /// After the moment at which the ad's own close button would be shown, while the page draws its own; and after the
    /// video has run for its whole length, while the page keeps it from its end.
    double custom_close = 5;
    /// While the video does not move and no close button can be tapped. A video that the page pauses or seeks in again
    /// and again does not move.
    double nothing_moves = 30;
};

/// The viewer's way out of an ad that has none: a close button in a window above the ad. It changes nothing of the
/// controller, and stays once it is shown. Its tap closes the ad, also one whose first close hides the video.
///
/// The witness hears what it shows and does ("guard"). It waits while the viewer is out of the application or on
/// a screen of the kit's, which has a way out of its own. Main thread only.
class CloseGuard : public Object
{
public:
    /// @param ad reports to this guard as long as both live
    static std::shared_ptr<CloseGuard> create(const std::shared_ptr<QoroPhoneGapViewController>& ad,
                                              const CloseGuardTimes& times);
    ~CloseGuard() override;
    CloseGuard(const CloseGuard&) = delete;
    CloseGuard& operator=(const CloseGuard&) = delete;

    /// The page was sent a tap on the close button.
    void page_took_close_tap();
    /// Whether the page's script answers has changed.
    void page_responds(bool responds);
    /// Whether the way out is shown.
    bool is_shown() const { return static_cast<bool>(window_); }

private:
    CloseGuard(const std::shared_ptr<QoroPhoneGapViewController>& ad, const CloseGuardTimes& times);

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

    Platform& platform_;
    const std::weak_ptr<QoroPhoneGapViewController> ad_;
    const CloseGuardTimes times_;
    std::unique_ptr<ViewWatch> watch_;
    TimerId timer_ = 0;
    bool looks_ = false;
    bool in_background_ = false;
    bool watches_page_ = false;
    bool page_responds_ = true;

    // Since when, in seconds of the main loop; absent for what does not hold.

    std::optional<double> page_silent_;
    /// The page draws the close control, and the ad's own would be shown.
    std::optional<double> control_owed_;
    /// A tap was given to the page, and nothing has come of it.
    std::optional<double> tapped_;
    bool video_hidden_at_tap_ = false;
    /// The video has run for its whole length, and its end is yet to come.
    std::optional<double> end_owed_;
    VideoMotion motion_;

    UIWindow window_;
    UIButton button_;
    /// How the device is turned to its viewer, clockwise.
    double turn_ = 0;
};

} // namespace qoro
