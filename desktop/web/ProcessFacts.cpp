#include "desktop/web/ProcessFacts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qoro
{

namespace
{

std::string contents(const std::string& path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return "";
    std::array<char, 8192> bytes;
    const ssize_t count = read(file, bytes.data(), bytes.size());
    close(file);
    return {bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

std::string place_of(int process)
{
    return "/proc/" + std::to_string(process);
}

/// The last number on the line of a key; 0 if there is none.
std::uint64_t number_after(const std::string& text, const std::string& key)
{
    const std::size_t at = text.find("\n" + key);
    if (at == std::string::npos)
        return 0;
    const std::size_t begin = at + 1 + key.size();
    const std::string line = text.substr(begin, text.find('\n', begin) - begin);
    std::uint64_t number = 0;
    for (const char* c = line.data(); c < line.data() + line.size();) {
        const auto [end, error] = std::from_chars(c, line.data() + line.size(), number);
        c = error == std::errc() ? end : c + 1;
    }
    return number;
}

/// The fields of a "stat" file after the name, which may contain any character.
std::vector<std::string> fields_of(const std::string& stat)
{
    std::vector<std::string> fields;
    const std::size_t name_end = stat.rfind(')');
    if (name_end == std::string::npos)
        return fields;
    std::size_t at = name_end + 2;
    while (at < stat.size()) {
        const std::size_t end = std::min(stat.find(' ', at), stat.size());
        fields.push_back(stat.substr(at, end - at));
        at = end + 1;
    }
    return fields;
}

std::optional<double> worked_of(const std::string& stat)
{
    const std::vector<std::string> fields = fields_of(stat);
    if (fields.size() < 13)
        return std::nullopt;
    static const double ticks = static_cast<double>(sysconf(_SC_CLK_TCK));
    return (std::stod(fields[11]) + std::stod(fields[12])) / ticks;
}

template <typename F>
void for_each_number_in(const std::string& folder, F&& found)
{
    DIR* entries = opendir(folder.c_str());
    if (!entries)
        return;
    while (const dirent* entry = readdir(entries)) {
        int number = 0;
        const std::string_view name = entry->d_name;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
        if (error == std::errc() && end == name.data() + name.size())
            found(number);
    }
    closedir(entries);
}

std::string first_line(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

} // namespace

std::optional<std::uint64_t> own_memory(int process)
{
    const std::string status = contents(place_of(process) + "/status");
    const bool has_ended = status.find("\nState:\tZ") != std::string::npos;
    if (status.empty() || has_ended)
        return std::nullopt;
    return (number_after(status, "RssAnon:") + number_after(status, "RssShmem:") + number_after(status, "VmSwap:")) *
           1024;
}

std::optional<double> worked_seconds(int process)
{
    return worked_of(contents(place_of(process) + "/stat"));
}

std::optional<double> worked_seconds(int process, int thread)
{
    const std::string task = place_of(process) + "/task/" + std::to_string(thread);
    // In nanoseconds if the system provides them, otherwise in clock ticks, usually of 10 ms.
    const std::string precise = contents(task + "/schedstat");
    std::uint64_t nanoseconds = 0;
    if (std::from_chars(precise.data(), precise.data() + precise.size(), nanoseconds).ec == std::errc())
        return static_cast<double>(nanoseconds) * 1e-9;
    return worked_of(contents(task + "/stat"));
}

void for_each_descendant(int process, const std::function<void(int, const std::string&)>& found)
{
    std::map<int, int> parents;
    for_each_number_in("/proc", [&](int number) {
        const std::vector<std::string> fields = fields_of(contents(place_of(number) + "/stat"));
        if (fields.size() > 1)
            parents[number] = std::stoi(fields[1]);
    });
    for (const auto& [number, parent] : parents) {
        int ancestor = parent;
        for (int depth = 0; depth < 16 && ancestor != process && parents.contains(ancestor); ++depth)
            ancestor = parents[ancestor];
        if (ancestor == process)
            found(number, first_line(contents(place_of(number) + "/comm")));
    }
}

void for_each_thread(int process, const std::function<void(int, const std::string&)>& found)
{
    const std::string tasks = place_of(process) + "/task";
    for_each_number_in(tasks, [&](int thread) {
        found(thread, first_line(contents(tasks + "/" + std::to_string(thread) + "/comm")));
    });
}

std::uint64_t number_space(int process)
{
    struct stat facts {
    };
    return stat((place_of(process) + "/ns/pid").c_str(), &facts) == 0 ? facts.st_ino : 0;
}

int innermost_number(int process)
{
    return static_cast<int>(number_after(contents(place_of(process) + "/status"), "NSpid:"));
}

} // namespace qoro
