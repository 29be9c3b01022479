#include "record/MendedRecording.h"

#include "formats/InputError.h"
#include "formats/InputFile.h"
#include "record/RecordFile.h"
#include "record/Recording.h"
#include "tests/app/ShellRun.h"
#include "tests/record/RecordedSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <unistd.h>

// Recordings whose writer was ended in the middle of a write.

namespace qoro::test
{

namespace
{

bool is_one_line(const std::string& text)
{
    return !text.empty() && text.find('\n') == std::string::npos;
}

/// Replays what can be read of a recording, and expects that it is a prefix of a trace.
/// @return whether anything can be read
bool replays_a_prefix(const std::string& torn, const std::string& trace)
{
    try {
        const auto mended = mended_recording(torn, "torn.json");
        EXPECT_TRUE(!mended || is_one_line(mended->lost)) << mended->lost;
        const std::string replay = replayed(mended ? mended->text : torn);
        EXPECT_TRUE(trace.starts_with(replay)) << replay;
        return true;
    } catch (const InputError& refusal) {
        EXPECT_TRUE(is_one_line(refusal.what())) << refusal.what();
        return false;
    }
}

} // namespace

TEST(MendedRecording, AWholeRecordingAndOtherTextsStayAsTheyAre)
{
    EXPECT_FALSE(mended_recording(record(first_session()).text, "whole.json"));
    EXPECT_FALSE(mended_recording(first_session(), "scenario.json"));
    EXPECT_FALSE(mended_recording("{\"ad\": {", "scenario.json"));
    EXPECT_FALSE(mended_recording("", "empty.json"));
}

TEST(MendedRecording, ACutAnywhereReplaysAPrefixOrIsRefusedWithOneLine)
{
    const Recorded made = record(first_session());
    const std::size_t entries = made.text.find("\"replay\":[\n") + 11;
    std::set<std::size_t> cuts{0, 1, 2, entries - 1, entries};
    std::mt19937 random(1);
    while (cuts.size() < 20)
        cuts.insert(random() % made.text.size());
    for (std::size_t last = made.text.size() - 8; last < made.text.size(); ++last)
        cuts.insert(last);
    for (const std::size_t cut : cuts) {
        SCOPED_TRACE(cut);
        EXPECT_EQ(replays_a_prefix(made.text.substr(0, cut), made.trace), cut >= entries);
    }
}

TEST(MendedRecording, ALastWriteThatIsTornLosesNothingBeforeIt)
{
    // A flush replaces the closing brackets by entries and new brackets.
    const Recorded made = record(first_session());
    const std::size_t half = made.text.rfind(",\n{", made.text.size() / 2);
    const std::string before = made.text.substr(0, half) + std::string(RecordingTail);
    const std::string flushed = replayed(before);
    const std::string after = made.text.substr(0, made.text.rfind("\n]}"));
    for (const std::size_t written : {1, 2, 3, 4, 5, 40}) {
        SCOPED_TRACE(written);
        std::string torn = before;
        torn.replace(half, std::min(written, torn.size() - half), after.substr(half, written));
        const auto mended = mended_recording(torn, "torn.json");
        EXPECT_TRUE(replayed(mended ? mended->text : torn).starts_with(flushed));
        EXPECT_TRUE(replays_a_prefix(torn, made.trace));
    }
}

TEST(MendedRecording, APageThatWasNeverWrittenEndsTheRecordingThere)
{
    const Recorded made = record(first_session());
    std::string holed = made.text;
    const std::size_t hole = made.text.size() * 2 / 3;
    holed.replace(hole, 512, 512, '\0');
    const auto mended = mended_recording(holed, "holed.json");
    ASSERT_TRUE(mended);
    EXPECT_NE(mended->lost.find(
                  "from line " +
                  std::to_string(
                      std::count(made.text.begin(), made.text.begin() + static_cast<std::ptrdiff_t>(hole), '\n') + 1)),
              std::string::npos)
        << mended->lost;
    EXPECT_TRUE(replays_a_prefix(holed, made.trace));
}

TEST(MendedRecording, ARecordingWithoutAnAdIsRefused)
{
    const std::string name = testing::TempDir() + "no-ad-" + std::to_string(::getpid()) + ".json";
    {
        const RecordFile file(name);
    }
    EXPECT_THROW(mended_recording(read_input_file(name), name), InputError);
    const ShellResult refused = run_shell("qoro-ad simulate " + name);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.errors,
              "qoro-ad: " + name + ": the recording ended before an ad opened: there is nothing to replay\n");
    std::filesystem::remove(name);
}

TEST(MendedRecording, TheCommandsReplayWhatIsLeftAndSayWhatIsNot)
{
    const Recorded made = record(first_session());
    const std::string torn = made.text.substr(0, made.text.size() * 2 / 3);
    const ShellResult replay = run_shell("qoro-ad simulate -", torn);
    EXPECT_EQ(replay.status, 0);
    EXPECT_FALSE(replay.output.empty());
    EXPECT_TRUE(made.trace.starts_with(replay.output));
    const ShellResult scenario = run_shell("qoro-ad simulate --as-scenario - | qoro-ad simulate -", torn);
    EXPECT_FALSE(scenario.output.empty());
    const ShellResult smaller = run_shell("qoro-ad shrink - --while 'line player do=create'", torn);
    EXPECT_EQ(smaller.status, 0);
    for (const ShellResult* each : {&replay, &scenario})
        EXPECT_EQ(lines_of(each->errors).size(), 1U) << each->errors;
    for (const ShellResult* each : {&replay, &scenario, &smaller})
        EXPECT_EQ(each->errors.find("qoro-ad: stdin: the recording was cut off after "), 0U) << each->errors;

    const ShellResult refused = run_shell("qoro-ad simulate -", torn.substr(0, 300));
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.errors, "qoro-ad: stdin: the recording was cut off before its first entry: there is nothing to "
                              "replay\n");
}

} // namespace qoro::test
