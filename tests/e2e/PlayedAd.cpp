#include "tests/e2e/PlayedAd.h"

#include "Places.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>
#include <utility>

namespace qoro::test
{

namespace
{

using Clock = std::chrono::steady_clock;

/// Polling interval for the running program.
constexpr std::chrono::milliseconds Glance{20};

std::string words_of(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string first_lines(const std::string& text, int count)
{
    std::size_t end = 0;
    while (count-- > 0 && end < text.size())
        end = std::min(text.find('\n', end), text.size() - 1) + 1;
    return text.substr(0, end);
}

struct Process {
    int id = 0;
    std::string name;
    /// Z for a zombie.
    char state = 0;
    int parent = 0;
    int group = 0;
};

std::vector<Process> all_processes()
{
    std::vector<Process> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string line = words_of((entry.path() / "stat").string());
        // PID, name in parentheses (which may contain anything), state, parent, group (proc_pid_stat(5)).
        const std::size_t name = line.find('(');
        const std::size_t end = line.rfind(')');
        if (name == std::string::npos || end == std::string::npos)
            continue;
        Process process{.id = std::stoi(line), .name = line.substr(name + 1, end - name - 1)};
        std::istringstream(line.substr(end + 1)) >> process.state >> process.parent >> process.group;
        found.push_back(process);
    }
    return found;
}

/// The processes of a program: itself first, then its process group and all their descendants.
std::vector<Process> family_of(int program)
{
    const std::vector<Process> all = all_processes();
    std::set<int> family{program};
    for (std::size_t before = 0; before != family.size();) {
        before = family.size();
        for (const Process& process : all)
            if (process.group == program || family.contains(process.parent))
                family.insert(process.id);
    }
    std::vector<Process> members;
    for (const Process& process : all)
        if (process.state != 'Z' && family.contains(process.id))
            members.insert(process.id == program ? members.begin() : members.end(), process);
    return members;
}

int start(const std::vector<std::string>& command, const std::string& output, const std::string& errors)
{
    const pid_t child = fork();
    if (child < 0)
        throw std::runtime_error("no process could be made");
    if (child == 0) {
        // A separate process group, so that every process in it can be killed.
        setpgid(0, 0);
        const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int err = open(errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        std::vector<char*> arguments;
        for (const std::string& word : command)
            arguments.push_back(const_cast<char*>(word.c_str()));
        arguments.push_back(nullptr);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
    return child;
}

/// The second of the video that a trace line reports; −1 for another line.
int second_of(const nlohmann::json& line)
{
    if (line.value("event", "") != "video_timeupdate")
        return -1;
    return std::stoi(line["data"]["e"]["current_time"].get<std::string>());
}

bool succeeds(const std::vector<std::string>& command)
{
    const int child = start(command, "/dev/null", "/dev/null");
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

void run(const std::vector<std::string>& command)
{
    if (!succeeds(command))
        throw std::runtime_error(command.front() + " failed");
}

} // namespace

PlayedAd::PlayedAd(std::vector<std::string> arguments, std::vector<std::string> launcher, bool silent)
{
    std::string name = (std::filesystem::temp_directory_path() / "played-ad-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("no folder could be made");
    folder_ = name;
    std::vector<std::string> command = std::move(launcher);
    command.insert(command.end(), {QORO_AD, "play", "--trace", folder_ + "/trace.jsonl"});
    if (silent)
        command.emplace_back("--mute-output");
    if (const char* option = std::getenv("QORO_WEB_SANDBOX_OPTION"); option && *option)
        command.emplace_back(option);
    command.insert(command.end(), arguments.begin(), arguments.end());
    process_ = start(command, folder_ + "/out", folder_ + "/err");
}

PlayedAd::~PlayedAd()
{
    if (!ended_) {
        kill(-process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    if (testing::Test::HasFailure())
        std::cerr << "Standard error begins:\n"
                  << first_lines(complaints(), 20) << "The trace begins:\n"
                  << first_lines(words_of(folder_ + "/trace.jsonl"), 80);
    std::filesystem::remove_all(folder_);
}

void PlayedAd::click(int x, int y)
{
    run({"xdotool", "mousemove", std::to_string(x), std::to_string(y), "click", "1"});
}

bool PlayedAd::clicks_until(int x, int y, const std::function<bool()>& holds)
{
    constexpr double one_click = 3;
    return eventually([&] {
        click(x, y);
        return eventually(holds, one_click);
    });
}

void PlayedAd::press(const std::string& key)
{
    // A key pressed before the window exists would be lost.
    has_keyboard_ = has_keyboard_ || eventually([] { return succeeds({"xdotool", "getwindowfocus"}); });
    run({"xdotool", "key", key});
}

void PlayedAd::photograph(const std::string& png)
{
    run({"ffmpeg", "-loglevel", "error", "-y", "-f", "x11grab", "-video_size", "1280x1024", "-i",
         std::getenv("DISPLAY"), "-frames:v", "1", png});
}

void PlayedAd::terminate()
{
    kill(process_, SIGTERM);
}

bool PlayedAd::kill_page_process()
{
    // The kernel truncates process names to 15 characters.
    for (const Process& process : family_of(process_))
        if (process.name == "WebKitWebProces")
            return kill(process.id, SIGKILL) == 0;
    return false;
}

std::vector<int> PlayedAd::processes() const
{
    std::vector<int> ids;
    for (const Process& process : family_of(process_))
        ids.push_back(process.id);
    return ids;
}

nlohmann::json PlayedAd::wait_for(const std::function<bool(const nlohmann::json&)>& fits, double seconds)
{
    nlohmann::json found;
    std::size_t seen = 0;
    eventually(
        [&] {
            for (const auto& lines = trace(); found.is_null() && seen < lines.size(); ++seen)
                if (fits(lines[seen]))
                    found = lines[seen];
            return !found.is_null();
        },
        seconds);
    return found;
}

bool PlayedAd::eventually(const std::function<bool()>& holds, double seconds)
{
    const auto until = Clock::now() + std::chrono::duration<double>(seconds);
    while (true) {
        const bool last = exit_status(0) >= 0 || ended_ || Clock::now() >= until;
        if (holds())
            return true;
        if (last)
            return false;
        std::this_thread::sleep_for(Glance);
    }
}

bool PlayedAd::reports(const nlohmann::json& members, double seconds)
{
    const auto fits = [&](const nlohmann::json& line) {
        nlohmann::json merged = line;
        merged.merge_patch(members);
        return merged == line;
    };
    return !wait_for(fits, seconds).is_null();
}

bool PlayedAd::hears(const std::string& event, double seconds)
{
    return !wait_for([&](const nlohmann::json& line) { return line.value("event", "") == event; }, seconds).is_null();
}

bool PlayedAd::page_hears(const std::string& event)
{
    return !wait_for([&](const nlohmann::json& line) {
                return line.value("event", "") == event && line.value("listeners", 0) > 0;
            }).is_null();
}

bool PlayedAd::reaches_second(int second, double seconds)
{
    return !wait_for([&](const nlohmann::json& line) { return second_of(line) >= second; }, seconds).is_null();
}

int PlayedAd::second()
{
    int second = 0;
    for (const nlohmann::json& line : trace())
        second = std::max(second, second_of(line));
    return second;
}

bool PlayedAd::plays()
{
    bool plays = false;
    for (const nlohmann::json& line : trace()) {
        const std::string event = line.value("event", "");
        if (event == "video_play")
            plays = true;
        else if (event == "video_pause" || event == "video_ended")
            plays = false;
    }
    return plays;
}

bool PlayedAd::server_gets(const std::string& path, double seconds)
{
    return eventually([&] { return hits_of(path) > 0; }, seconds);
}

int PlayedAd::hits_of(const std::string& path)
{
    int count = 0;
    for (const nlohmann::json& line : trace())
        if (line["what"] == "hit" && line["url"].get<std::string>().starts_with(path))
            ++count;
    return count;
}

const std::vector<nlohmann::json>& PlayedAd::trace()
{
    std::ifstream file(folder_ + "/trace.jsonl");
    file.seekg(read_);
    for (std::string line; std::getline(file, line) && !file.eof();) {
        read_ += static_cast<std::streamoff>(line.size() + 1);
        trace_.push_back(nlohmann::json::parse(line));
    }
    return trace_;
}

bool PlayedAd::shows(int x, int y, Colour colour)
{
    return shows([&](const Picture& look) { return alike(look.at(x, y), colour); });
}

bool PlayedAd::shows(const std::function<bool(const Picture&)>& wanted)
{
    return eventually([&] {
        photograph(folder_ + "/look.png");
        return wanted(Picture(folder_ + "/look.png"));
    });
}

int PlayedAd::exit_status(double seconds)
{
    const auto until = Clock::now() + std::chrono::duration<double>(seconds);
    while (!ended_) {
        int status = 0;
        if (waitpid(process_, &status, WNOHANG) == process_) {
            ended_ = true;
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        } else if (Clock::now() >= until) {
            return -1;
        } else {
            std::this_thread::sleep_for(Glance);
        }
    }
    return status_;
}

std::string PlayedAd::complaints() const
{
    return words_of(folder_ + "/err");
}

} // namespace qoro::test
