#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace qoro::test
{

struct Recorded {
    std::string text;
    std::string trace;
};

/// What is recorded besides a scenario.
struct RecordingSetup {
    bool redacts = true;
    /// Whether the machine has the kit's stand-ins for a calendar, a message composer and a store.
    bool stand_ins = false;
    /// The tag's document, if the tag is a file.
    std::string document = {};
    /// Reported by the machine's player at half a second; empty for no report.
    std::string why_video_fails = {};
};

/// Records a simulated session, of an ad or a tag, as a played one is, until a second after its last step.
Recorded record(const std::string& scenario, const RecordingSetup& setup = {});

/// The trace of a replay.
std::string replayed(const std::string& recording);

/// Records a session, and expects that its replay gives the same trace.
void expect_same(const std::string& scenario, const RecordingSetup& setup = {});

/// The simulator's first example.
std::string first_session();

/// The lines of a trace.
std::vector<nlohmann::json> parsed(const std::string& trace);
/// The addresses of the trackers that a trace sends, in order.
std::vector<std::string> trackers_of(const std::string& trace);

} // namespace qoro::test
