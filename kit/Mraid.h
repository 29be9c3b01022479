#pragma once

#include "platform/Foundation.h"
#include "platform/Platform.h"

#include <memory>
#include <optional>

namespace qoro
{

class QoroPhoneGapViewController;

/// The ad as the page's `mraid` object has it (IAB's MRAID 3.0, for an interstitial): carries out what the page asks
/// for, and tells the page what has changed about the ad, its place on the screen and the sound. It tells nothing
/// before the page's library has asked for it (mraid.load), and nothing after the ad has closed. Every request and
/// everything told is told to the witness too.
class Mraid : public Object
{
public:
    /// @param ad outlives this object
    explicit Mraid(QoroPhoneGapViewController& ad, Platform& platform);
    ~Mraid() override;
    Mraid(const Mraid&) = delete;
    Mraid& operator=(const Mraid&) = delete;

    /// Whether a message is for this object: its command begins with "mraid.".
    static bool is_for(const ScriptMessage& message) { return message.command.starts_with(Prefix); }
    /// Carries it out. What is refused is answered with an error.
    ScriptAnswer carry_out(const ScriptMessage& message);
    /// The page hears an error event, if it listens to the ad at all: something was refused that it did not ask for
    /// itself, or that was looked at only after its request had been accepted.
    /// @param action the name of the standard's call
    void tell_error(const NSString& why, std::string_view action);

    /// Whether the page has asked, by the standard's call, to draw its own close control. The layouts add the ad's
    /// button again; here the page's wish holds whenever it came.
    bool wants_custom_close() const { return wants_custom_close_; }
    /// Gives an orientation that the page forced back to the device, unless it has been turned since.
    /// @return whether one was forced
    bool release_orientation();

private:
    static constexpr std::string_view Prefix = "mraid.";

    struct Command;
    static const Command* command_named(std::string_view name);

    // Each answers why it was refused; null when it was carried out.
    NSString load(const NSArray& arguments);
    NSString close(const NSArray& arguments);
    NSString use_custom_close(const NSArray& arguments);
    NSString set_orientation(const NSArray& arguments);
    NSString open(const NSArray& arguments);
    NSString play_video(const NSArray& arguments);
    NSString create_calendar_event(const NSArray& arguments);
    NSString refuse_size(const NSArray& arguments);
    NSString refuse_picture(const NSArray& arguments);

    void set_device_orientation(int orientation);
    NSString leave_for(const NSURL& address);
    NSString run_on_touch(const Command& command, const NSArray& arguments);

    NSDictionary features() const;
    NSDictionary facts() const;
    void look_later();
    void tell_changes();
    void volume_changed();
    void went_to_background();
    void came_back();

    QoroPhoneGapViewController& ad_;
    Platform& platform_;
    /// The script's callback; null before the page has asked for anything.
    Value callback_;
    /// What the page knows.
    NSDictionary told_;
    std::unique_ptr<ViewWatch> watch_;
    bool looks_ = false;
    bool in_background_ = false;
    bool wants_custom_close_ = false;
    /// How the device was held before the page forced an orientation, and what it answers since; absent while none is
    /// forced.
    struct Forced {
        int before = 0;
        int now = 0;
    };
    std::optional<Forced> forced_;
};

} // namespace qoro
