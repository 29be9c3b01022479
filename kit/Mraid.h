#pragma once

#include "platform/Foundation.h"
#include "platform/Platform.h"

#include <memory>
#include <optional>

namespace qoro
{

class QoroPhoneGapViewController;

/// The ad's side of the page's `mraid` object (IAB MRAID 3.0, for an interstitial). Executes the page's requests and
/// sends it changes of the ad, its position on the screen and the sound. Sends nothing before the page's library
/// requests it (mraid.load), and nothing after the ad has closed. Emits every request and everything sent as
/// events.
class Mraid : public Object
{
public:
    /// @param ad must outlive this object
    explicit Mraid(QoroPhoneGapViewController& ad, Platform& platform);
    ~Mraid() override;
    Mraid(const Mraid&) = delete;
    Mraid& operator=(const Mraid&) = delete;

    /// Whether a message is addressed to this object: its command begins with "mraid.".
    static bool is_for(const ScriptMessage& message) { return message.command.starts_with(Prefix); }
    /// Executes a message; answers with an error when it refuses.
    ScriptAnswer carry_out(const ScriptMessage& message);
    /// Sends the page an error event, provided that it has called mraid.load. For refusals of something that the page
    /// did not request, or that was examined only after its request was accepted.
    /// @param action name of the MRAID call
    void send_error(const NSString& why, std::string_view action);

    /// Whether the page has called MRAID's useCustomClose(true). The layouts add the ad's button again, so the wish
    /// must be reapplied after each of them.
    bool wants_custom_close() const { return wants_custom_close_; }
    /// Restores the device orientation that the page overrode, unless the device has been turned since.
    /// @return whether an orientation was forced
    bool release_orientation();

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
    static constexpr std::string_view Prefix = "mraid.";

    struct Command;
    static const Command* command_named(std::string_view name);

    // Each returns null on success, otherwise the reason for the refusal.
    NSString load(const NSArray& arguments);
    NSString close(const NSArray& arguments);
    NSString use_custom_close(const NSArray& arguments);
    NSString set_orientation(const NSArray& arguments);
    NSString open(const NSArray& arguments);
    NSString play_video(const NSArray& arguments);
    NSString create_calendar_event(const NSArray& arguments);
    NSString refuse_size(const NSArray& arguments);
    NSString refuse_picture(const NSArray& arguments);

    void set_device_orientation(UIDeviceOrientation orientation);
    NSString leave_for(const NSURL& address);
    NSString run_on_touch(const Command& command, const NSArray& arguments);

    NSDictionary features() const;
    NSDictionary facts() const;
    void look_later();
    void send_changes();
    void send(const NSDictionary& facts);
    void volume_changed();
    void went_to_background();
    void came_back();

    QoroPhoneGapViewController& ad_;
    Platform& platform_;
    /// The script's callback id; null before mraid.load.
    Value callback_;
    /// The facts last sent to the page.
    NSDictionary sent_;
    std::unique_ptr<ViewWatch> watch_;
    bool looks_ = false;
    bool in_background_ = false;
    bool wants_custom_close_ = false;
    /// The orientation before the page forced one, and the one set instead; absent while none is forced.
    struct Forced {
        UIDeviceOrientation before;
        UIDeviceOrientation now;
    };
    std::optional<Forced> forced_;
};

} // namespace qoro
