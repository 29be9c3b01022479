#include "tests/desktop/support/Programs.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace qoro::test
{

namespace fs = std::filesystem;

namespace
{
[[maybe_unused]] const Programs& made_before_any_test = Programs::instance();

std::string content_of(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}
} // namespace

Programs& Programs::instance()
{
    static Programs programs;
    return programs;
}

Programs::Programs()
{
    std::string pattern = (fs::temp_directory_path() / "qoro-programs-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    fs::create_directories(folder_ / "applications");
    setenv("XDG_DATA_HOME", folder_.c_str(), 1);
    add("opener", "x-scheme-handler/qoro-test", "echo \"$1\" > '" + (folder_ / "opened").string() + "'");
    const std::string copy = (folder_ / "event.ics").string();
    add("calendar", "text/calendar", "cp \"$1\" '" + copy + ".part' && mv '" + copy + ".part' '" + copy + "'");
    std::ofstream(folder_ / "applications" / "mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/qoro-test=opener.desktop\ntext/calendar=calendar.desktop\n";
}

Programs::~Programs()
{
    fs::remove_all(folder_);
}

void Programs::add(const std::string& name, const std::string& type, const std::string& script)
{
    std::ofstream(folder_ / name) << "#!/bin/sh\n" << script << '\n';
    fs::permissions(folder_ / name, fs::perms::owner_all);
    std::ofstream(folder_ / "applications" / (name + ".desktop"))
        << "[Desktop Entry]\nType=Application\nName=" << name << "\nMimeType=" << type
        << ";\nExec=" << (folder_ / name).string() << (type == "text/calendar" ? " %f\n" : " %u\n");
}

std::string Programs::opened() const
{
    return content_of(folder_ / "opened");
}

std::string Programs::calendar_file() const
{
    return content_of(folder_ / "event.ics");
}

void Programs::forget_calendar_file()
{
    fs::remove(folder_ / "event.ics");
}

void Programs::keep_calendar(bool there)
{
    const fs::path shown = folder_ / "applications" / "calendar.desktop";
    const fs::path hidden = folder_ / "calendar.desktop";
    fs::rename(there ? hidden : shown, there ? shown : hidden);
}

} // namespace qoro::test
