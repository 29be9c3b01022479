#pragma once

#include "tests/e2e/Picture.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <ios>
#include <string>
#include <vector>

namespace qoro::test
{

/// `qoro-ad play` as a viewer meets it: the program itself on the X server of the test, driven with a real pointer and
/// real keys, and heard through its trace.
class PlayedAd
{
public:
    /// Starts the program.
    /// @param arguments what follows "qoro-ad play"
    /// @param launcher a command that starts the command that follows it; none for none
    /// @param silent whether the video has no sound, whatever sound server there is
    explicit PlayedAd(std::vector<std::string> arguments, std::vector<std::string> launcher = {}, bool silent = true);
    /// Ends the program if it still runs.
    ~PlayedAd();
    PlayedAd(const PlayedAd&) = delete;
    PlayedAd& operator=(const PlayedAd&) = delete;

    // ------------------------------------------------------------------------------------------- the viewer's hands

    /// A click of the left button at a point of the screen.
    void click(int x, int y);
    /// Clicks there again and again, each time waiting some seconds for a condition to come of it. For a click that may
    /// come too early, and does no harm when it comes twice.
    bool clicks_until(int x, int y, const std::function<bool()>& holds);
    /// A key by its X name, as soon as a window of the program has the keyboard.
    void press(const std::string& key);
    /// Takes a picture of the X server's screen into a file.
    void photograph(const std::string& png);

    /// Asks the program to end, as the system does.
    void terminate();
    /// Kills the process that shows the page.
    /// @return false when there is none
    bool kill_page_process();

    // ---------------------------------------------------------------------------------------------- what is to be seen

    /// Seconds that a slow machine may need for anything; only a hang takes so long.
    static constexpr double Patience = 90;

    /// Waits for a line of the trace, and gives the first one that fits; a null one when none came within the seconds,
    /// or the program ended without one.
    nlohmann::json wait_for(const std::function<bool(const nlohmann::json&)>& fits, double seconds = Patience);
    /// Waits until a condition holds, which is asked again and again; false when the seconds are over, or the program
    /// has ended without it.
    bool eventually(const std::function<bool()>& holds, double seconds = Patience);
    /// Waits for a line of the trace with these members.
    bool tells(const nlohmann::json& members);
    /// Waits for an event to the script.
    bool hears(const std::string& event, double seconds = Patience);
    /// Waits until the page's script has heard of an event.
    bool page_hears(const std::string& event);
    /// Waits for a line of the trace that tells the second the video has reached.
    bool reaches_second(int second, double seconds = Patience);
    /// The last second that the trace tells; 0 before the first.
    int second();
    /// Whether the last news of the video were that it plays.
    bool plays();
    /// Waits until the ad server got a request whose path begins so.
    bool server_gets(const std::string& path, double seconds = Patience);
    /// How often the ad server got a request whose path begins so, up to now.
    int hits_of(const std::string& path);
    /// All lines up to now; the reference holds until the next question.
    const std::vector<nlohmann::json>& trace();
    /// Looks again and again until a point of the screen has a colour.
    bool shows(int x, int y, Colour colour);
    /// Looks again and again until a picture of the screen is as it is wanted.
    bool shows(const std::function<bool(const Picture&)>& wanted);
    /// Waits for the program's end: its exit status, −1 when it did not end in time or was killed.
    int exit_status(double seconds = Patience);
    /// The numbers of the program's process, first, and of all that it has started, as far as they still run.
    std::vector<int> processes() const;
    /// The number of the program's own process.
    int process() const { return process_; }
    /// What it wrote to standard error.
    std::string complaints() const;
    const std::string& folder() const { return folder_; }

private:
    std::string folder_;
    int process_ = 0;
    int status_ = -1;
    bool ended_ = false;
    bool has_keyboard_ = false;
    std::vector<nlohmann::json> trace_;
    /// Bytes of the trace's file that have been read.
    std::streamoff read_ = 0;
};

} // namespace qoro::test
