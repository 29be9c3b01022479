#include "desktop/net/ServedFile.h"

#include "desktop/glib/Owned.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qoro
{

namespace
{
bool climbs(const std::filesystem::path& path)
{
    return std::ranges::find(path, "..") != path.end();
}

/// Both paths must be canonical (std::filesystem::canonical).
bool lies_in(const std::filesystem::path& file, const std::filesystem::path& folder)
{
    return std::ranges::mismatch(folder, file).in1 == folder.end();
}
} // namespace

std::optional<ServedFile> ServedFile::open(const std::string& folder, std::string_view path)
{
    const Owned<char, g_free> unescaped(g_uri_unescape_segment(path.data(), path.data() + path.size(), nullptr));
    if (!unescaped)
        return std::nullopt;
    const std::filesystem::path asked = std::filesystem::path(unescaped.get()).relative_path();
    if (climbs(asked))
        return std::nullopt;

    std::error_code failed;
    const std::filesystem::path file = std::filesystem::canonical(folder / asked, failed);
    if (failed || !lies_in(file, folder))
        return std::nullopt;
    // Links were resolved above; O_NOFOLLOW rejects one that has replaced the file since. O_NONBLOCK: opening a pipe
    // must not block.
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0)
        return std::nullopt;
    struct stat facts {
    };
    if (fstat(descriptor, &facts) != 0 || !S_ISREG(facts.st_mode)) {
        close(descriptor);
        return std::nullopt;
    }
    return ServedFile(descriptor, facts.st_size);
}

ServedFile::ServedFile(ServedFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_)
{
}

ServedFile::~ServedFile()
{
    if (descriptor_ >= 0)
        close(descriptor_);
}

std::size_t ServedFile::read(std::int64_t from, char* into, std::size_t length) const
{
    std::size_t got = 0;
    while (got < length) {
        const ssize_t now = pread(descriptor_, into + got, length - got, from + static_cast<std::int64_t>(got));
        if (now < 0 && errno == EINTR)
            continue;
        if (now <= 0)
            break;
        got += static_cast<std::size_t>(now);
    }
    return got;
}

} // namespace qoro
