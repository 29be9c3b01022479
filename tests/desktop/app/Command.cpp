#include "tests/desktop/app/Command.h"

#include "Places.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <spawn.h>
#include <sstream>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qoro::test
{

namespace
{
struct Pipe {
    Pipe()
    {
        if (pipe(ends.data()) != 0)
            std::abort();
    }
    std::array<int, 2> ends{};
};

/// Milliseconds between two calls of `glance`.
constexpr int Glance = 50;

/// Reads from both until both are closed or the time is up.
/// @param glance called at least every Glance milliseconds
/// @return whether both were closed in time
bool drain(std::array<pollfd, 2>& from, std::array<std::string*, 2> into, double seconds,
           const std::function<void()>& glance)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (from[0].fd >= 0 || from[1].fd >= 0) {
        if (std::chrono::steady_clock::now() >= deadline || poll(from.data(), from.size(), Glance) < 0)
            return false;
        glance();
        for (std::size_t i = 0; i < from.size(); ++i) {
            if (!from[i].revents)
                continue;
            std::array<char, 4096> piece;
            const ssize_t length = read(from[i].fd, piece.data(), piece.size());
            if (length > 0)
                into[i]->append(piece.data(), static_cast<std::size_t>(length));
            else
                from[i].fd = -1;
        }
    }
    return true;
}
} // namespace

CommandResult run_command(const std::vector<std::string>& arguments, double seconds,
                          const std::function<bool()>& enough)
{
    std::string program = QORO_AD;
    std::vector<char*> line{program.data()};
    for (const std::string& argument : arguments)
        line.push_back(const_cast<char*>(argument.c_str()));
    line.push_back(nullptr);

    Pipe output;
    Pipe errors;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", 0, 0);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], 1);
    posix_spawn_file_actions_adddup2(&actions, errors.ends[1], 2);
    for (const int end : {output.ends[0], output.ends[1], errors.ends[0], errors.ends[1]})
        posix_spawn_file_actions_addclose(&actions, end);
    pid_t process = 0;
    // The tests' ASAN_OPTIONS (CMakeLists.txt) make allocation slow; with them the program takes three times as long.
    std::vector<char*> environment;
    for (char** each = environ; *each; ++each)
        if (!std::string_view(*each).starts_with("ASAN_OPTIONS="))
            environment.push_back(*each);
    environment.push_back(nullptr);
    const int failed = posix_spawn(&process, program.c_str(), &actions, nullptr, line.data(), environment.data());
    posix_spawn_file_actions_destroy(&actions);
    close(output.ends[1]);
    close(errors.ends[1]);

    CommandResult result;
    if (failed == 0) {
        std::array<pollfd, 2> from{{{output.ends[0], POLLIN, 0}, {errors.ends[0], POLLIN, 0}}};
        bool asked_to_end = false;
        const auto glance = [&] {
            if (enough && !asked_to_end && enough()) {
                asked_to_end = true;
                kill(process, SIGTERM);
            }
        };
        if (!drain(from, {&result.output, &result.errors}, seconds, glance))
            kill(process, SIGKILL);
        int status = 0;
        waitpid(process, &status, 0);
        if (WIFEXITED(status))
            result.status = WEXITSTATUS(status);
    }
    close(output.ends[0]);
    close(errors.ends[0]);
    return result;
}

ScratchFolder::ScratchFolder()
{
    folder_ = (std::filesystem::temp_directory_path() / "qoro-test-XXXXXX").string();
    if (!mkdtemp(folder_.data()))
        std::abort();
}

ScratchFolder::~ScratchFolder()
{
    std::filesystem::remove_all(folder_);
}

std::string ScratchFolder::path(const std::string& name) const
{
    return folder_ + "/" + name;
}

std::string ScratchFolder::write(const std::string& name, const std::string& content) const
{
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
}

std::string ScratchFolder::read(const std::string& name) const
{
    std::stringstream text;
    text << std::ifstream(path(name), std::ios::binary).rdbuf();
    return text.str();
}

} // namespace qoro::test
