#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// An open file of a served folder. Movable.
class ServedFile
{
public:
    /// Opens the file that a request's path names.
    /// @param folder as std::filesystem::canonical gives it
    /// @param path as the client sent it, percent escapes and all, without the query
    /// @return absent for a path that climbs ("..") or is malformed, for what is no regular file or cannot be read, and
    ///         for whatever lies outside the folder once links are followed
    static std::optional<ServedFile> open(const std::string& folder, std::string_view path);

    ServedFile(ServedFile&& other) noexcept;
    ServedFile& operator=(ServedFile&&) = delete;
    ~ServedFile();

    std::int64_t size() const { return size_; }
    /// Reads into a buffer.
    /// @return how many bytes came; fewer than asked for only at the file's end or on an error
    std::size_t read(std::int64_t from, char* into, std::size_t length) const;

private:
    ServedFile(int descriptor, std::int64_t size) : descriptor_(descriptor), size_(size) {}

    int descriptor_;
    std::int64_t size_;
};

} // namespace qoro
