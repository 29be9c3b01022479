#pragma once

#include "tests/e2e/Picture.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <ios>
#include <string>
#include <vector>

namespace qoro::test
{

/// Runs `qoro-ad play` on the test's X server, drives it with real pointer and key events, and reads its trace.
class PlayedAd
{
public:
    /// Starts the program.
    /// @param arguments after "qoro-ad play"
    /// @param launcher a command that runs the command after it; empty for none
    /// @param silent whether the video has no sound, regardless of any sound server
    explicit PlayedAd(std::vector<std::string> arguments, std::vector<std::string> launcher = {}, bool silent = true);
    /// Terminates the program if it is still running.
    ~PlayedAd();
    PlayedAd(const PlayedAd&) = delete;
    PlayedAd& operator=(const PlayedAd&) = delete;

    // -------------------------------------------------------------------------------------------------------- input

    /// Left-clicks a point of the screen.
    void click(int x, int y);
    /// Clicks repeatedly, waiting some seconds for a condition after each click. For a click that may be too early and
    /// is harmless when repeated.
    bool clicks_until(int x, int y, const std::function<bool()>& holds);
    /// Presses a key by its X keysym name, once a window of the program has the keyboard focus.
    void press(const std::string& key);
    /// Saves a screenshot of the X server as PNG.
    void photograph(const std::string& png);

    /// Terminates the program as the system does (SIGTERM).
    void terminate();
    /// Kills the page's process.
    /// @return false without a page process
    bool kill_page_process();

    // ----------------------------------------------------------------------------------------------------- observation

    /// Time limit in seconds, generous for slow machines; only a hang exceeds it.
    static constexpr double Patience = 90;

    /// Waits for a trace line and returns the first match; null on timeout, or if the program ended without it.
    nlohmann::json wait_for(const std::function<bool(const nlohmann::json&)>& fits, double seconds = Patience);
    /// Polls until a condition holds; false on timeout, or if the program ended without it.
    bool eventually(const std::function<bool()>& holds, double seconds = Patience);
    /// Waits for a trace line with these members.
    bool reports(const nlohmann::json& members, double seconds = Patience);
    /// Waits for an event to the script.
    bool hears(const std::string& event, double seconds = Patience);
    /// Waits until the page's script has received an event.
    bool page_hears(const std::string& event);
    /// Waits for a trace line that reports the video's position in seconds.
    bool reaches_second(int second, double seconds = Patience);
    /// The last position that the trace reports, in seconds; 0 before the first.
    int second();
    /// Whether the last reported state of the video is playing.
    bool plays();
    /// Waits until the ad server received a request whose path starts with a prefix.
    bool server_gets(const std::string& path, double seconds = Patience);
    /// Number of requests so far whose path starts with a prefix.
    int hits_of(const std::string& path);
    /// All trace lines so far; the reference is valid until the next query.
    const std::vector<nlohmann::json>& trace();
    /// Waits until a point of the screen has a colour.
    bool shows(int x, int y, Colour colour);
    /// Waits until a screenshot satisfies a condition.
    bool shows(const std::function<bool(const Picture&)>& wanted);
    /// Waits for the program's exit status; −1 on timeout, or if it was killed.
    int exit_status(double seconds = Patience);
    /// PIDs of the program, first, and of all its running descendants.
    std::vector<int> processes() const;
    /// PID of the program.
    int process() const { return process_; }
    /// The program's standard error.
    std::string complaints() const;
    const std::string& folder() const { return folder_; }

private:
    std::string folder_;
    int process_ = 0;
    int status_ = -1;
    bool ended_ = false;
    bool has_keyboard_ = false;
    std::vector<nlohmann::json> trace_;
    /// Bytes of the trace file read so far.
    std::streamoff read_ = 0;
};

} // namespace qoro::test
