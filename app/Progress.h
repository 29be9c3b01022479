#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace qoro
{

/// One line on a terminal that says how far a command is. It appears when the command has taken a second, and is gone
/// when the command ends. Nothing is written where standard error is not a terminal. Any thread may call it.
class Progress
{
public:
    /// The line appears on standard error if that is a terminal.
    Progress();
    /// Removes the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Sets the line's text, one line; cut at the terminal's width.
    void set(std::string text);
    /// Removes the line until it is next due, so that a line of output can take its place.
    void clear();

private:
    void serve();
    void write(const std::string& text);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::string text_;
    bool written_ = false;
    bool ends_ = false;
    /// Not running without a terminal.
    std::thread thread_;
};

} // namespace qoro
