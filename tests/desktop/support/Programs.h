#pragma once

#include <filesystem>
#include <string>

namespace qoro::test
{

/// Programs that only this test process knows: one for addresses of "qoro-test:", which writes down what it is to open,
/// and one for calendars, which copies the file that it is given. They stand before GLib looks for programs.
class Programs
{
public:
    /// The process's only ones.
    static Programs& instance();

    ~Programs();
    Programs(const Programs&) = delete;
    Programs& operator=(const Programs&) = delete;

    /// What was opened last, and a line feed; empty before.
    std::string opened() const;
    /// The copy of the calendar's file; empty while there is none.
    std::string calendar_file() const;
    void forget_calendar_file();
    /// Takes the calendar away, or brings it back; GLib hears of it a little later.
    void keep_calendar(bool there);

private:
    Programs();
    void add(const std::string& name, const std::string& type, const std::string& script);

    std::filesystem::path folder_;
};

} // namespace qoro::test
