#pragma once

#include <filesystem>
#include <string>

namespace qoro::test
{

/// Default applications of this test process only: one for "qoro-test:" addresses, which records the address, and one
/// for calendar files, which copies the file. Registered through XDG_DATA_HOME during static initialization, before
/// GLib reads it.
class Programs
{
public:
    /// The process's only instance.
    static Programs& instance();

    ~Programs();
    Programs(const Programs&) = delete;
    Programs& operator=(const Programs&) = delete;

    /// The address opened last, followed by a line feed; empty before the first.
    std::string opened() const;
    /// The content of the copied calendar file; empty if there is none.
    std::string calendar_file() const;
    void forget_calendar_file();
    /// Removes the calendar application or restores it. GLib notices with a short delay.
    void keep_calendar(bool there);

private:
    Programs();
    void add(const std::string& name, const std::string& type, const std::string& script);

    std::filesystem::path folder_;
};

} // namespace qoro::test
