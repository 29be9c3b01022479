#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qoro::test
{

/// The result of a run of the command.
struct CommandResult {
    /// The exit status; -1 if the program crashed or was killed because the time was up.
    int status = -1;
    std::string output;
    std::string errors;
};

/// Runs the qoro-ad that was built with these tests until it exits. Its stdin is /dev/null.
/// @param seconds time limit, after which the program is killed
/// @param enough polled while the program runs; once it returns true the program receives SIGTERM. May be null
CommandResult run_command(const std::vector<std::string>& arguments, double seconds,
                          const std::function<bool()>& enough = nullptr);

/// A temporary folder, removed by the destructor.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path(const std::string& name) const;
    /// Creates or overwrites a file.
    /// @return the file's path
    std::string write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;

private:
    std::string folder_;
};

} // namespace qoro::test
