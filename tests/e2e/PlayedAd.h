#pragma once

#include "tests/e2e/Picture.h"

#include <nlohmann/json.hpp>

#include <functional>
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
    /// A key by its X name.
    void press(const std::string& key);
    /// Takes a picture of the X server's screen into a file.
    void photograph(const std::string& png);

    /// Asks the program to end, as the system does.
    void terminate();
    /// Kills the process that shows the page.
    /// @return false when there is none
    bool kill_page_process();

    // ---------------------------------------------------------------------------------------------- what is to be seen

    /// Waits for a line of the trace, and gives the first one that fits; a null one when none came within the seconds,
    /// or the program ended without one.
    nlohmann::json wait_for(const std::function<bool(const nlohmann::json&)>& fits, double seconds = 20);
    /// Waits for a line of the trace with these members.
    bool tells(const nlohmann::json& members);
    /// Waits for an event to the script.
    bool hears(const std::string& event, double seconds = 20);
    /// Waits for a line of the trace that tells the second the video has reached.
    bool reaches_second(int second, double seconds = 25);
    /// Waits until the ad server got a request whose path begins so.
    bool server_gets(const std::string& path, double seconds = 20);
    /// How often the ad server got a request whose path begins so, up to now.
    int hits_of(const std::string& path);
    /// All lines up to now.
    std::vector<nlohmann::json> trace();
    /// Looks again and again, sixty times at most, until a point of the screen has a colour.
    bool shows(int x, int y, Colour colour);
    /// Waits for the program's end: its exit status, −1 when it did not end in time or was killed.
    int exit_status(double seconds = 20);
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
};

} // namespace qoro::test
