#include "desktop/cache/VideoCache.h"

#include "desktop/cache/CacheFolder.h"
#include "desktop/cache/CacheRecord.h"
#include "desktop/glib/Owned.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace qoro
{

namespace
{
constexpr std::string_view VideoEnd = ".video";
constexpr std::string_view RecordEnd = ".json";
/// An incomplete file; its writer holds a lock on it.
constexpr std::string_view PartEnd = ".part";
constexpr std::size_t DigestDigits = 64;
/// Seconds by which a copy's time of modification precedes its completion; more than the resolution of any file system.
constexpr time_t SecondsBack = 10;

/// "1f3c….video" → "1f3c…"; empty if the cache did not create the name.
std::string stem_of(const std::string& name, std::string_view end)
{
    const bool ours =
        name.size() == DigestDigits + end.size() && name.ends_with(end) &&
        std::all_of(name.begin(), name.begin() + DigestDigits, [](char c) { return g_ascii_isxdigit(c); });
    return ours ? name.substr(0, DigestDigits) : "";
}

std::string video_of(const std::string& stem)
{
    return stem + std::string(VideoEnd);
}
std::string record_of(const std::string& stem)
{
    return stem + std::string(RecordEnd);
}

std::optional<CacheRecord> read_record(const CacheFolder& folder, const std::string& stem)
{
    const auto text = folder.read(record_of(stem));
    auto record = text ? read_cache_record(*text) : std::nullopt;
    if (record && digest_of(record->address) != stem)
        return std::nullopt;
    return record;
}

/// The record is removed first: without it there is no copy.
void remove_copy(const CacheFolder& folder, const std::string& stem)
{
    folder.remove(record_of(stem));
    folder.remove(video_of(stem));
}

enum class State {
    None,
    Good,
    /// The content is correct, but the file is not the recorded one.
    Moved,
    Damaged,
};

struct Look {
    State state = State::None;
    CacheRecord record = {};
    CacheFolder::Facts facts = {};
};

Look look_at(const CacheFolder& folder, const std::string& stem)
{
    auto record = read_record(folder, stem);
    if (!record)
        return {};
    const Descriptor video = folder.open_file(video_of(stem));
    const CacheFolder::Facts facts = video ? CacheFolder::facts(video) : CacheFolder::Facts{};
    State state = State::Damaged;
    if (video && record->knows(facts))
        state = State::Good;
    else if (video && facts.length == record->length && digest_of(video) == record->digest)
        state = State::Moved;
    return {state, std::move(*record), facts};
}

struct Copy {
    std::string stem;
    CacheRecord record;
    std::int64_t last_use;
};

std::vector<Copy> copies_in(const CacheFolder& folder)
{
    std::vector<Copy> copies;
    for (const std::string& name : folder.names()) {
        const std::string stem = stem_of(name, RecordEnd);
        auto record = stem.empty() ? std::nullopt : read_record(folder, stem);
        const auto last_use = folder.touched(name);
        if (record && last_use && folder.touched(video_of(stem)))
            copies.push_back({stem, std::move(*record), *last_use});
    }
    std::ranges::sort(copies, std::ranges::greater(),
                      [](const Copy& copy) { return std::pair(copy.last_use, copy.stem); });
    return copies;
}

/// Removes what terminated processes left incomplete. The folder's lock is held.
void tidy(const CacheFolder& folder)
{
    for (const std::string& name : folder.names()) {
        if (name.ends_with(PartEnd)) {
            const Descriptor part = folder.open_file(name);
            if (!part || flock(part.number(), LOCK_EX | LOCK_NB) == 0)
                folder.remove(name);
        } else if (const std::string video = stem_of(name, VideoEnd); !video.empty()) {
            if (!read_record(folder, video))
                remove_copy(folder, video);
        } else if (const std::string record = stem_of(name, RecordEnd); !record.empty()) {
            if (!folder.touched(video_of(record)) || !read_record(folder, record))
                remove_copy(folder, record);
        }
    }
}

/// Removes the least recently used copies until there is space. The folder's lock is held.
void make_room(const CacheFolder& folder, std::uint64_t bytes, std::uint64_t most_bytes)
{
    std::uint64_t used = bytes;
    for (const Copy& copy : copies_in(folder)) {
        used += copy.record.length;
        if (used > most_bytes)
            remove_copy(folder, copy.stem);
    }
}
} // namespace

std::string VideoCache::default_folder()
{
    return (std::filesystem::path(g_get_user_cache_dir()) / "qoro-ad" / "videos").string();
}

VideoCache::VideoCache(Options options) : options_(std::move(options))
{
    options_.folder = std::filesystem::absolute(options_.folder).string();
}

void VideoCache::warn(const std::string& line)
{
    if (!std::exchange(warned_, true) && options_.warn)
        options_.warn(line);
}

NSString VideoCache::path_for(const NSString& address)
{
    if (!address)
        return nullptr;
    try {
        return look_up(address.text());
    } catch (const std::system_error& error) {
        warn(std::string("the video cache can't be used: ") + error.what());
        return nullptr;
    }
}

NSString VideoCache::look_up(const std::string& address)
{
    const auto folder = CacheFolder::open(options_.folder);
    if (!folder)
        return nullptr;
    const std::string stem = digest_of(address);
    Look look = look_at(*folder, stem);
    if (look.state == State::Damaged || look.state == State::Moved) {
        // Another process might have been replacing the copy: look again under the lock.
        const CacheFolder::Lock lock = folder->try_lock();
        if (lock)
            look = look_at(*folder, stem);
        if (lock && look.state == State::Damaged)
            remove_copy(*folder, stem);
        if (lock && look.state == State::Moved) {
            look.record.inode = look.facts.inode;
            look.record.modified = look.facts.modified;
            folder->write(record_of(stem), to_json(look.record));
        }
    }
    if (look.state == State::None || look.state == State::Damaged)
        return nullptr;
    if (!folder->touch(record_of(stem)))
        warn("the video cache can't be written: " + options_.folder + ": " + g_strerror(errno));
    return options_.folder + "/" + video_of(stem);
}

std::vector<CachedVideo> VideoCache::videos() const
{
    std::vector<CachedVideo> videos;
    if (const auto folder = CacheFolder::open(options_.folder))
        for (Copy& copy : copies_in(*folder))
            videos.push_back({std::move(copy.record.address), options_.folder + "/" + video_of(copy.stem),
                              copy.record.length, copy.last_use});
    return videos;
}

VideoCache::Removed VideoCache::empty()
{
    Removed removed;
    const auto folder = CacheFolder::open(options_.folder);
    if (!folder)
        return removed;
    const CacheFolder::Lock lock = folder->lock();
    for (const Copy& copy : copies_in(*folder)) {
        remove_copy(*folder, copy.stem);
        ++removed.videos;
        removed.bytes += copy.record.length;
    }
    tidy(*folder);
    return removed;
}

void VideoCache::keep(const CacheFolder& folder, const std::string& part, CacheRecord record)
{
    const std::string stem = digest_of(record.address);
    const CacheFolder::Lock lock = folder.lock();
    tidy(folder);
    remove_copy(folder, stem);
    make_room(folder, record.length, options_.most_bytes);
    folder.rename(part, video_of(stem));
    const CacheFolder::Facts facts = CacheFolder::facts(folder.open_file(video_of(stem)));
    record.inode = facts.inode;
    record.modified = facts.modified;
    try {
        folder.write(record_of(stem), to_json(record));
    } catch (const std::system_error&) {
        remove_copy(folder, stem);
        throw;
    }
    folder.touch(record_of(stem));
}

// --------------------------------------------------------------------------------------------------- Incoming video

struct IncomingVideo::Part {
    CacheFolder folder;
    std::string name;
    Descriptor file;
    std::uint64_t length = 0;
    GChecksum* digest = g_checksum_new(G_CHECKSUM_SHA256);
    bool is_kept = false;

    ~Part() { g_checksum_free(digest); }

    [[noreturn]] void fail() const { throw std::system_error(errno, std::generic_category(), folder.path()); }
};

IncomingVideo::IncomingVideo(VideoCache& cache, const std::string& address) : cache_(cache), address_(address)
{
    CacheFolder folder = CacheFolder::make(cache.folder());
    // The folder's lock prevents other processes from removing the new file as abandoned before it has its own lock.
    const CacheFolder::Lock lock = folder.lock();
    std::string name = take_text(g_uuid_string_random()).append(PartEnd);
    Descriptor file = folder.create(name);
    flock(file.number(), LOCK_EX | LOCK_NB);
    part_.reset(new Part{.folder = std::move(folder), .name = std::move(name), .file = std::move(file)});
}

IncomingVideo::~IncomingVideo()
{
    if (part_->is_kept)
        return;
    try {
        part_->folder.remove(part_->name);
    } catch (const std::system_error&) {
        // The next incoming video removes it.
    }
}

void IncomingVideo::write(std::string_view bytes)
{
    g_checksum_update(part_->digest, reinterpret_cast<const guchar*>(bytes.data()), static_cast<gssize>(bytes.size()));
    while (!bytes.empty()) {
        const ssize_t written = ::write(part_->file.number(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            part_->fail();
        bytes.remove_prefix(static_cast<std::size_t>(written));
        part_->length += static_cast<std::uint64_t>(written);
    }
}

std::uint64_t IncomingVideo::length() const
{
    return part_->length;
}

void IncomingVideo::keep()
{
    std::array<timespec, 2> times{{{0, UTIME_OMIT}, {}}};
    clock_gettime(CLOCK_REALTIME, &times[1]);
    times[1].tv_sec -= SecondsBack;
    // Written to the disk before the file gets its name: otherwise a power failure could leave a file of the right
    // length without content.
    if (futimens(part_->file.number(), times.data()) != 0 || fsync(part_->file.number()) != 0)
        part_->fail();
    CacheRecord record{.address = address_, .length = part_->length, .digest = g_checksum_get_string(part_->digest)};
    cache_.keep(part_->folder, part_->name, std::move(record));
    part_->is_kept = true;
}

} // namespace qoro
