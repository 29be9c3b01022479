#pragma once

#include "desktop/cache/Descriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// A folder that several processes work in. Files are named relative to it, and no link in it is ever followed: what is
/// no regular file is treated as absent. What fails is thrown as std::system_error, with the folder's path.
class CacheFolder
{
public:
    /// What is known of a file without reading it. Times are nanoseconds since 1970.
    struct Facts {
        std::uint64_t length = 0;
        std::uint64_t inode = 0;
        std::int64_t modified = 0;
    };
    /// Held by one process at a time, until it is destroyed.
    using Lock = Descriptor;

    /// @return absent when there is no such folder
    static std::optional<CacheFolder> open(const std::string& path);
    /// Makes the folder first, for its user alone, where there is none.
    static CacheFolder make(const std::string& path);

    const std::string& path() const { return path_; }
    std::vector<std::string> names() const;

    /// Waits for the folder's lock.
    Lock lock() const;
    /// @return empty when another holds it, or there can be none
    Lock try_lock() const;

    /// @return empty when there is no such regular file, or it cannot be read
    Descriptor open_file(const std::string& name) const;
    static Facts facts(const Descriptor& file);
    /// When the file was last touched; absent when there is no such regular file.
    std::optional<std::int64_t> touched(const std::string& name) const;
    /// @return whether it could be
    bool touch(const std::string& name) const;
    /// The whole of a small file; absent when there is none, and when it is too large for what is kept here.
    std::optional<std::string> read(const std::string& name) const;

    /// A new file that is open for writing and reading; no other of this name was there.
    Descriptor create(const std::string& name) const;
    /// Writes a small file in one step: it has either its old text or the new one.
    void write(const std::string& name, std::string_view text) const;
    void rename(const std::string& from, const std::string& to) const;
    /// Nothing when there is no such file. What is no file at all (a folder) stays.
    void remove(const std::string& name) const;

private:
    CacheFolder(std::string path, Descriptor folder) : path_(std::move(path)), folder_(std::move(folder)) {}
    Descriptor open_lock() const;
    [[noreturn]] void fail() const;

    std::string path_;
    Descriptor folder_;
};

} // namespace qoro
