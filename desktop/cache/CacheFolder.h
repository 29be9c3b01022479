#pragma once

#include "desktop/cache/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// A folder that several processes share. File names are relative to it. Symbolic links are never followed: anything
/// but a regular file is treated as absent. Errors are thrown as std::system_error with the folder's path, except where
/// a function returns an empty value.
class CacheFolder
{
public:
    /// Metadata of a file. Times are nanoseconds since 1970.
    struct Facts {
        std::uint64_t length = 0;
        std::uint64_t inode = 0;
        std::int64_t modified = 0;
    };
    /// Held by one process at a time, until it is destroyed.
    using Lock = Descriptor;

    /// @return absent if there is no such folder
    static std::optional<CacheFolder> open(const std::string& path);
    /// Opens a folder and creates it first if necessary, accessible to its user only.
    static CacheFolder make(const std::string& path);

    const std::string& path() const { return path_; }
    /// Names of all entries, including "." and "..".
    std::vector<std::string> names() const;

    /// Waits for the folder's lock.
    Lock lock() const;
    /// @return empty if another process holds the lock, or the lock file cannot be opened
    Lock try_lock() const;

    /// @return empty if there is no such regular file, or it cannot be read
    Descriptor open_file(const std::string& name) const;
    /// @return zeros if the metadata cannot be read
    static Facts facts(const Descriptor& file);
    /// Time of the last modification; absent if there is no such regular file.
    std::optional<std::int64_t> touched(const std::string& name) const;
    /// Sets a file's time of modification to now.
    /// @return whether that succeeded
    bool touch(const std::string& name) const;
    /// The content of a small file; absent if there is no such file, if it cannot be read, or if it exceeds 64 KiB.
    std::optional<std::string> read(const std::string& name) const;

    /// Creates a file for reading and writing; fails if the name exists.
    Descriptor create(const std::string& name) const;
    /// Replaces a small file atomically: readers see either the old text or the new one.
    void write(const std::string& name, std::string_view text) const;
    /// Renames a file and replaces an existing one atomically.
    void rename(const std::string& from, const std::string& to) const;
    /// Succeeds if there is no such file. Folders are left alone.
    void remove(const std::string& name) const;

private:
    CacheFolder(std::string path, Descriptor folder) : path_(std::move(path)), folder_(std::move(folder)) {}
    Descriptor open_lock() const;
    [[noreturn]] void fail() const;

    std::string path_;
    Descriptor folder_;
};

} // namespace qoro
