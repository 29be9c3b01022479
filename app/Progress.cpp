#include "app/Progress.h"

#include "app/SignalMask.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace qoro
{

namespace
{

using std::chrono::milliseconds;
constexpr milliseconds FirstAfter{1000};
constexpr milliseconds Interval{200};
constexpr const char* EraseLine = "\r\x1b[K";

bool is_terminal()
{
    const char* const kind = std::getenv("TERM");
    return isatty(STDERR_FILENO) && !(kind && std::strcmp(kind, "dumb") == 0);
}

std::size_t terminal_width()
{
    constexpr std::size_t Usual = 80;
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col - 1U : Usual - 1;
}

} // namespace

Progress::Progress()
{
    if (!is_terminal())
        return;
    const SignalMask of_the_thread;
    thread_ = std::thread([this] { serve(); });
}

Progress::~Progress()
{
    if (!thread_.joinable())
        return;
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    changed_.notify_one();
    thread_.join();
    clear();
}

void Progress::set(std::string text)
{
    const std::lock_guard lock(mutex_);
    text_ = std::move(text);
}

void Progress::clear()
{
    const std::lock_guard lock(mutex_);
    if (std::exchange(written_, false))
        write(EraseLine);
}

void Progress::serve()
{
    std::unique_lock lock(mutex_);
    std::string shown;
    for (milliseconds wait = FirstAfter; !changed_.wait_for(lock, wait, [this] { return ends_; }); wait = Interval) {
        if (text_.empty() || (written_ && text_ == shown))
            continue;
        shown = text_;
        write(EraseLine + shown.substr(0, terminal_width()));
        written_ = true;
    }
}

void Progress::write(const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

} // namespace qoro
