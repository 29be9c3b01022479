#include "desktop/cache/CacheRecord.h"

#include "desktop/glib/Owned.h"

#include <glib.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cerrno>
#include <memory>

namespace qoro
{

namespace
{
struct FreeChecksum {
    void operator()(GChecksum* sum) const { g_checksum_free(sum); }
};
using Checksum = std::unique_ptr<GChecksum, FreeChecksum>;
} // namespace

std::string to_json(const CacheRecord& record)
{
    return nlohmann::ordered_json{{"address", record.address},
                                  {"length", record.length},
                                  {"sha256", record.digest},
                                  {"inode", record.inode},
                                  {"modified", record.modified}}
        .dump();
}

std::optional<CacheRecord> read_cache_record(std::string_view json)
{
    const nlohmann::json read = nlohmann::json::parse(json, nullptr, false);
    try {
        CacheRecord record;
        read.at("address").get_to(record.address);
        read.at("length").get_to(record.length);
        read.at("sha256").get_to(record.digest);
        read.at("inode").get_to(record.inode);
        read.at("modified").get_to(record.modified);
        return record;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

std::string digest_of(std::string_view bytes)
{
    return take_text(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
}

std::string digest_of(const Descriptor& file)
{
    const Checksum sum(g_checksum_new(G_CHECKSUM_SHA256));
    std::array<unsigned char, 64u << 10> piece;
    off_t at = 0;
    for (;;) {
        const ssize_t length = pread(file.number(), piece.data(), piece.size(), at);
        if (length < 0 && errno == EINTR)
            continue;
        if (length < 0)
            return "";
        if (length == 0)
            return g_checksum_get_string(sum.get());
        g_checksum_update(sum.get(), piece.data(), length);
        at += length;
    }
}

} // namespace qoro
