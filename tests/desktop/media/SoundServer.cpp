#include "SoundServer.h"

#include "desktop/media/PulseCall.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <vector>

extern char** environ;

namespace qoro::test
{

namespace
{
/// The first percentage after a word, for example "50%"; empty if there is none.
std::string percentage_after(const std::string& text, const std::string& word)
{
    const std::size_t from = text.find(word);
    const std::size_t sign = from == std::string::npos ? from : text.find('%', from);
    if (sign == std::string::npos)
        return {};
    const std::size_t before = text.find_last_of(' ', sign);
    return text.substr(before + 1, sign - before);
}

pid_t start(const std::string& folder)
{
    const std::string protocol =
        "module-native-protocol-unix auth-anonymous=1 auth-cookie-enabled=0 socket=" + folder + "/native";
    const std::array<const char*, 12> arguments = {"pulseaudio",
                                                   "-n",
                                                   "--daemonize=no",
                                                   "--exit-idle-time=-1",
                                                   "--use-pid-file=no",
                                                   "--log-target=null",
                                                   "-L",
                                                   protocol.c_str(),
                                                   "-L",
                                                   "module-null-sink sink_name=nothing",
                                                   nullptr};
    // Keeps the server off the session bus, which allows only one PulseAudio server.
    std::vector<const char*> environment = {"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"};
    for (char** entry = environ; *entry; ++entry)
        if (!std::string_view(*entry).starts_with("DBUS_SESSION_BUS_ADDRESS="))
            environment.push_back(*entry);
    environment.push_back(nullptr);
    pid_t process = -1;
    if (posix_spawnp(&process, "pulseaudio", nullptr, nullptr, const_cast<char* const*>(arguments.data()),
                     const_cast<char* const*>(environment.data())) != 0)
        return -1;
    return process;
}
} // namespace

SoundServer::SoundServer()
{
    char made[] = "/tmp/qoro-sound-XXXXXX";
    folder_ = mkdtemp(made);
    setenv("PULSE_SERVER", ("unix:" + folder_ + "/native").c_str(), 1);
    setenv("PULSE_RUNTIME_PATH", folder_.c_str(), 1);
    setenv("PULSE_STATE_PATH", folder_.c_str(), 1);
    setenv("PULSE_COOKIE", "/dev/null", 1);
    process_ = start(folder_);
    for (int tries = 0; tries < 600 && !runs_; ++tries) {
        PulseCall call(0.5);
        runs_ = call.default_sink().has_value();
        if (!runs_)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
}

SoundServer::~SoundServer()
{
    end();
    without_sound_server();
    std::filesystem::remove_all(folder_);
}

void SoundServer::end()
{
    if (process_ <= 0)
        return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = -1;
}

std::string SoundServer::pactl(const std::string& arguments) const
{
    std::string printed;
    FILE* output = popen(("LC_ALL=C pactl " + arguments).c_str(), "r");
    if (!output)
        return printed;
    char buffer[1024];
    while (const std::size_t count = fread(buffer, 1, sizeof buffer, output))
        printed.append(buffer, count);
    pclose(output);
    return printed;
}

std::string SoundServer::device_volume() const
{
    const bool muted = pactl("get-sink-mute nothing").find("yes") != std::string::npos;
    return percentage_after(pactl("get-sink-volume nothing"), "Volume:") + (muted ? " muted" : "");
}

void SoundServer::begin_call()
{
    if (pactl("list short modules").find("module-role-cork") == std::string::npos)
        pactl("load-module module-role-cork trigger_roles=abstract cork_roles=video");
    // Its role is "abstract".
    call_ = pactl("load-module module-sine sink=nothing");
}

void SoundServer::end_call()
{
    pactl("unload-module " + call_.substr(0, call_.find('\n')));
}

std::string SoundServer::stream_volume() const
{
    const std::string list = pactl("list sink-inputs");
    for (std::size_t from = list.find("Sink Input #"); from != std::string::npos;) {
        const std::size_t next = list.find("Sink Input #", from + 1);
        const std::string stream = list.substr(from, next - from);
        // Before playing, GStreamer probes the supported formats with a silent stream.
        if (stream.find("pulsesink probe") == std::string::npos)
            return percentage_after(stream, "Volume:");
        from = next;
    }
    return {};
}

void without_sound_server()
{
    setenv("PULSE_SERVER", "unix:/nonexistent/qoro", 1);
    setenv("PULSE_COOKIE", "/dev/null", 1);
}

} // namespace qoro::test
