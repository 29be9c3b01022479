#include "desktop/media/VolumeGuard.h"

#include "desktop/media/Embedded.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

extern char** environ;

namespace qoro
{

namespace
{

constexpr const char* Name = "qoro-ad volume";

/// The helper's program in memory.
/// @return a file descriptor; negative on failure
int program_in_memory()
{
    const int file = memfd_create(Name, MFD_CLOEXEC);
    std::string_view left = volume_guard_program();
    while (file >= 0 && !left.empty()) {
        const ssize_t written = write(file, left.data(), left.size());
        if (written <= 0) {
            close(file);
            return -1;
        }
        left.remove_prefix(static_cast<std::size_t>(written));
    }
    return file;
}

std::vector<std::string> arguments_for(const SinkVolume& found)
{
    std::vector<std::string> arguments{Name, found.sink, found.muted ? "1" : "0"};
    for (int channel = 0; channel < found.volume.channels; ++channel)
        arguments.push_back(std::to_string(found.volume.values[channel]));
    return arguments;
}

/// @param input the process's standard input
/// @return the process; -1 on failure
pid_t start(int program, int input, std::vector<std::string> arguments)
{
    std::vector<char*> texts;
    texts.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        texts.push_back(argument.data());
    texts.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    // A separate session, so that the interrupt key, which ends the program, does not end its guard.
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    const std::string path = "/proc/self/fd/" + std::to_string(program);
    pid_t process = -1;
    if (posix_spawn(&process, path.c_str(), &files, &attributes, texts.data(), environ) != 0)
        process = -1;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return process;
}

} // namespace

VolumeGuard::VolumeGuard(const SinkVolume& found)
{
    const int program = program_in_memory();
    if (program < 0)
        return;
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0) {
        line_ = ends[0];
        process_ = start(program, ends[1], arguments_for(found));
        close(ends[1]);
    }
    close(program);
}

VolumeGuard::~VolumeGuard()
{
    if (line_ >= 0) {
        // No SIGPIPE if the guard is gone.
        static_cast<void>(send(line_, "regular", 7, MSG_NOSIGNAL));
        close(line_);
    }
    if (process_ > 0)
        waitpid(process_, nullptr, 0);
}

} // namespace qoro
