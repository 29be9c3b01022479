#pragma once

#include "formats/LogSink.h"
#include "formats/Scenario.h"
#include "formats/Trace.h"
#include "record/Recorder.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// The beginning of a recording, up to the opened list of its entries. Its first line says what it may hold.
/// @param redacted whether identifiers will be redacted
std::string recording_head(const DeviceSetup& device, const HostSetup& host, const QoroVideoAd& ad,
                           const std::vector<Step>& steps, bool redacted);
/// As above, of a VAST tag with all its ads.
/// @param tag its address; of a document that is from no server, FileTag
std::string recording_head(const DeviceSetup& device, const HostSetup& host, const std::string& tag,
                           const std::vector<Step>& steps, bool redacted);
/// Address in a recording of a tag that has none.
inline constexpr const char* FileTag = "http://localhost/tag.xml";
/// What closes the list of entries and the recording.
inline constexpr std::string_view RecordingTail = "\n]}\n";

/// Whether a text is a recording, rather than any other scenario. False for text that is no JSON.
bool is_recording(std::string_view text);

/// A replayed session differs from the recorded one. The text is one line: the entry's path and line, and what differs.
struct ReplayDifference : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Replays a recording: the same trace at the same times, up to the last recorded entry.
/// @param text of the recording
/// @param file name for error messages
/// @param log receives the lines of the ad's log, too; may be empty
/// @throws InputError for a recording that cannot be read
/// @throws ReplayDifference where the controller does something else than the recorded one did; the trace up to there
///         has been written
void replay(const std::string& text, const std::string& file, TraceFormat format, const LineSink& sink,
            const LogSink& log = {});

} // namespace qoro
