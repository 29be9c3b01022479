#pragma once

#include <string>

namespace qoro
{

/// A folder of this process's own with the module that guards pages from within their process (guard/PageGuard.cpp),
/// which WebKit loads from there. Gone with the object.
class GuardFolder
{
public:
    /// @throws std::runtime_error when there can be no such folder, or nothing can be run from it: no page may be shown
    GuardFolder();
    ~GuardFolder();
    GuardFolder(const GuardFolder&) = delete;
    GuardFolder& operator=(const GuardFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

} // namespace qoro
