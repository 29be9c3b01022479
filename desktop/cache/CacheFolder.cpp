#include "desktop/cache/CacheFolder.h"

#include <glib.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>

namespace qoro
{

namespace
{
constexpr const char* LockName = "lock";
constexpr std::size_t LargestSmallFile = 64u << 10;

std::int64_t nanoseconds(const timespec& time)
{
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

[[noreturn]] void fail_at(const std::string& path)
{
    throw std::system_error(errno, std::generic_category(), path);
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};
} // namespace

std::optional<CacheFolder> CacheFolder::open(const std::string& path)
{
    Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder)
        return CacheFolder(path, std::move(folder));
    if (errno != ENOENT)
        fail_at(path);
    return std::nullopt;
}

CacheFolder CacheFolder::make(const std::string& path)
{
    if (g_mkdir_with_parents(path.c_str(), 0700) != 0)
        fail_at(path);
    if (auto folder = open(path))
        return std::move(*folder);
    fail_at(path);
}

void CacheFolder::fail() const
{
    fail_at(path_);
}

std::vector<std::string> CacheFolder::names() const
{
    // A separate descriptor, because reading advances the descriptor's position.
    const int copy = openat(folder_.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, CloseFolder> folder(copy < 0 ? nullptr : fdopendir(copy));
    if (!folder)
        fail();
    std::vector<std::string> names;
    while (const dirent* entry = readdir(folder.get()))
        names.emplace_back(entry->d_name);
    return names;
}

Descriptor CacheFolder::open_lock() const
{
    return Descriptor(openat(folder_.number(), LockName, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600));
}

CacheFolder::Lock CacheFolder::lock() const
{
    Lock lock = open_lock();
    if (!lock)
        fail();
    while (flock(lock.number(), LOCK_EX) != 0)
        if (errno != EINTR)
            fail();
    return lock;
}

CacheFolder::Lock CacheFolder::try_lock() const
{
    Lock lock = open_lock();
    if (lock && flock(lock.number(), LOCK_EX | LOCK_NB) != 0)
        return Lock();
    return lock;
}

Descriptor CacheFolder::open_file(const std::string& name) const
{
    // O_NONBLOCK: opening a pipe must not block.
    Descriptor file(openat(folder_.number(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {
    };
    if (!file || fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return Descriptor();
    return file;
}

CacheFolder::Facts CacheFolder::facts(const Descriptor& file)
{
    struct stat status {
    };
    if (fstat(file.number(), &status) != 0)
        return {};
    return {static_cast<std::uint64_t>(status.st_size), status.st_ino, nanoseconds(status.st_mtim)};
}

std::optional<std::int64_t> CacheFolder::touched(const std::string& name) const
{
    struct stat status {
    };
    if (fstatat(folder_.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return nanoseconds(status.st_mtim);
}

bool CacheFolder::touch(const std::string& name) const
{
    // Not UTIME_NOW: the kernel's own "now" is only as recent as its last tick.
    std::array<timespec, 2> times{{{0, UTIME_OMIT}, {}}};
    clock_gettime(CLOCK_REALTIME, &times[1]);
    return utimensat(folder_.number(), name.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0;
}

std::optional<std::string> CacheFolder::read(const std::string& name) const
{
    const Descriptor file = open_file(name);
    if (!file)
        return std::nullopt;
    std::string text;
    std::array<char, 4096> piece;
    for (;;) {
        const ssize_t length = ::read(file.number(), piece.data(), piece.size());
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0 || text.size() > LargestSmallFile)
            return std::nullopt;
        if (length == 0)
            return text;
        text.append(piece.data(), static_cast<std::size_t>(length));
    }
}

Descriptor CacheFolder::create(const std::string& name) const
{
    Descriptor file(openat(folder_.number(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file)
        fail();
    return file;
}

void CacheFolder::write(const std::string& name, std::string_view text) const
{
    const std::string temporary = name + ".part";
    remove(temporary);
    const Descriptor file = create(temporary);
    const ssize_t written = ::write(file.number(), text.data(), text.size());
    if (written >= 0 && static_cast<std::size_t>(written) < text.size())
        errno = ENOSPC;
    else if (written >= 0 && fdatasync(file.number()) == 0)
        return rename(temporary, name);
    const int error = errno;
    remove(temporary);
    errno = error;
    fail();
}

void CacheFolder::rename(const std::string& from, const std::string& to) const
{
    if (renameat(folder_.number(), from.c_str(), folder_.number(), to.c_str()) != 0)
        fail();
}

void CacheFolder::remove(const std::string& name) const
{
    if (unlinkat(folder_.number(), name.c_str(), 0) != 0 && errno != ENOENT && errno != EISDIR)
        fail();
}

} // namespace qoro
