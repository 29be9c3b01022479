#pragma once

#include <string>

namespace qoro
{

/// A private folder that contains the web process extension (guard/PageGuard.cpp), from which WebKit loads it. The
/// destructor deletes it.
class GuardFolder
{
public:
    /// @throws std::runtime_error if the folder cannot be created or nothing can be executed from it: no page may be
    ///         shown then
    GuardFolder();
    ~GuardFolder();
    GuardFolder(const GuardFolder&) = delete;
    GuardFolder& operator=(const GuardFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace qoro
