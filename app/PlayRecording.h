#pragma once

#include "Base/VideoPlayer/QoroVideoAd.h"
#include "desktop/DesktopPlatform.h"
#include "formats/HostSetup.h"
#include "formats/Steps.h"
#include "formats/Trace.h"
#include "formats/World.h"
#include "host/OpenedTag.h"
#include "record/RecordFile.h"
#include "record/Recorder.h"
#include "record/TapedPlatform.h"
#include "record/TapedTag.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qoro
{

/// Records a session of `qoro-ad play`. It lies between the session and the machine, and outlives the machine's
/// platform.
class PlayRecording
{
public:
    /// @param file where the recording goes
    /// @param redacts whether identifiers are redacted, in the recording and in the trace
    /// @throws InputError when the file cannot be written
    PlayRecording(const std::string& file, bool redacts);
    ~PlayRecording();
    PlayRecording(const PlayRecording&) = delete;
    PlayRecording& operator=(const PlayRecording&) = delete;

    /// The session's platform.
    TapedPlatform& platform() { return taped_; }
    /// The machine's options with screens that replace other programs recorded; they are the session's own.
    DesktopPlatform::Options options(DesktopPlatform::Options options);
    /// Puts the recording between the session and the machine. Once, before the session.
    /// @param controls what the session's steps change
    void connect(DesktopPlatform& machine, SessionControls& controls);
    /// For the session's steps; after connect().
    SessionControls& controls() { return *controls_; }

    /// Starts the recording of an ad.
    /// @param held how the viewer holds the device
    /// @param next receives the session's events as well
    void begin(const QoroVideoAd& ad, UIDeviceOrientation held, const HostSetup& host, const std::vector<Step>& steps,
               EventSink& next);
    /// Starts the recording of a tag.
    void begin(const OpenedTag::Tag& tag, UIDeviceOrientation held, const HostSetup& host,
               const std::vector<Step>& steps, EventSink& next);
    /// Ends it; the session goes on.
    void end() { recorder_.end(); }
    /// Writes what is missing.
    /// @return false if the recording is incomplete because of a write error
    bool flush();

    /// What the host does to the session, rather than the session itself or the machine.
    void by_host(std::string_view what, const std::function<void()>& work, const Value& of = {})
    {
        recorder_.host(what, work, of);
    }
    /// Work of the machine inside an event of the session.
    void outside(const std::function<void()>& work) { recorder_.outside(work); }
    /// Options of a tag, whose opening is recorded.
    TagOptions options(TagOptions options) { return taped_tag_.options(std::move(options)); }

    /// The clock for a trace of the session, and a sink for its lines: redacted as the recording is, so that a replay
    /// gives the same.
    /// @{
    const MainLoop& clock() const { return recorder_.clock(); }
    LineSink redacted(LineSink sink) const;
    /// @}

private:
    DeviceSetup device_setup(UIDeviceOrientation held) const;
    void begin(const std::string& head, const DeviceSetup& device, const HostSetup& host, EventSink& next);

    RecordFile file_;
    const bool redacts_;
    DesktopPlatform* machine_ = nullptr;
    TapedPlatform taped_;
    Recorder recorder_;
    TapedTag taped_tag_{recorder_};
    std::optional<TapedControls> controls_;
};

} // namespace qoro
