#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qoro::test
{

struct CommandResult {
    /// The exit status; -1 when it did not end by itself in time, or crashed.
    int status = -1;
    std::string output;
    std::string errors;
};

/// Runs the qoro-ad that was built with these tests, to its end.
/// @param seconds how long it may take
/// @param enough asked again and again while it runs; once it answers true the program is asked to end. Null: the
///   program ends by itself
CommandResult run_command(const std::vector<std::string>& arguments, double seconds,
                          const std::function<bool()>& enough = nullptr);

/// A folder of its own, gone with the object.
class ScratchFolder
{
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string path(const std::string& name) const;
    /// @return the file's path
    std::string write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;

private:
    std::string folder_;
};

} // namespace qoro::test
