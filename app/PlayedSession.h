#pragma once

#include "app/ContentComplaints.h"
#include "app/DeviceKeys.h"
#include "app/FileWatch.h"
#include "app/PlayInput.h"
#include "app/PlayOptions.h"
#include "app/PlayRecording.h"
#include "app/TraceFile.h"
#include "desktop/DesktopPlatform.h"
#include "desktop/glib/Owned.h"
#include "desktop/media/PreparedVideo.h"
#include "desktop/net/Reach.h"
#include "desktop/screen/DisplayWatch.h"
#include "host/OpenedAd.h"
#include "host/OpenedTag.h"
#include "host/Rehearsal.h"
#include "host/SessionControls.h"
#include "host/desktop/DesktopTag.h"
#include "host/desktop/ServedAd.h"

#include <glib.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// One playing of one ad, or of the ads of a tag, in a window.
class PlayedSession final : public SessionControls, public EventSink
{
public:
    /// @param options outlives this object
    /// @param trace_file absent for no trace
    /// @throws InputError when the recording cannot be written
    PlayedSession(const PlayOptions& options, PlayInput input, std::optional<TraceFile> trace_file);
    ~PlayedSession() override;

    /// @return the program's exit status
    int run();

private:
    // What the steps ask for.
    void bring_news(const MPMoviePlayerController&, const PlayerNews&) override {}
    void change_device(const DeviceChange& change) override;

    void receive(const Event& event) override;

    void connect_window();
    void follow_failures();
    void open();
    void serve_ad(bool loads_video);
    void open_ad(const HostSetup& host, Rehearsal rehearsal);
    void open_tag(HostSetup host, Rehearsal rehearsal);
    bool leave_screen();
    void watch_files();
    void served(const AdServerHit& hit);
    void reload();
    void schedule();
    void at(double seconds, std::function<void()> event);
    bool key_pressed(unsigned keyval);
    void take_snapshot(double seconds);
    void by_host(std::string_view what, const std::function<void()>& work, const Value& of = {});
    void outside(const std::function<void()>& work);

    void ended(const AdOutcome& outcome);
    void tag_ended(const TagOutcome& outcome);
    void close_ad(ClosedBy closer);
    void end();
    void display_lost();
    void fail(const std::string& what);

    static gboolean signalled(gpointer self);

    const PlayOptions& options_;
    PlayInput input_;
    const std::optional<TraceFile> trace_file_;
    /// Absent unless the session is recorded.
    std::optional<PlayRecording> recording_;
    DesktopPlatform platform_;
    /// The ad's platform.
    Platform& ads_;
    std::optional<Trace> trace_;
    std::unique_ptr<ServedAd> served_;
    /// Receives the last trackers of the ad that the present one has replaced.
    std::unique_ptr<ServedAd> served_before_;
    /// The host chooses the store, which may be in a private network.
    std::optional<NamedHosts> store_;
    /// The ad's video until its player takes it over.
    std::unique_ptr<PreparedVideo> early_video_;
    std::unique_ptr<OpenedAd> opened_;
    /// Instead of served_ and opened_, for a VAST tag.
    /// @{
    std::unique_ptr<DesktopTag> tag_hosts_;
    std::unique_ptr<OpenedTag> tag_;
    /// @}
    /// Null unless the ad opens again when its files change.
    std::unique_ptr<FileWatch> files_;
    /// Of the signals that close the ad in order.
    std::array<SourceId, 3> signals_;
    const DisplayWatch display_watch_{[this] { display_lost(); }};
    DeviceKeys keys_{platform_};
    ContentComplaints complaints_;
    bool ends_ = false;
    /// Something that was asked for could not be done.
    bool has_failed_ = false;
};

} // namespace qoro
