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
    /// @param folder canonical path (std::filesystem::canonical)
    /// @param path as the client sent it, with percent escapes, without the query
    /// @return absent for a malformed path or one that contains "..", for anything but a readable regular file, and for
    ///         a file that lies outside the folder once symbolic links are resolved
    static std::optional<ServedFile> open(const std::string& folder, std::string_view path);

    ServedFile(ServedFile&& other) noexcept;
    ServedFile& operator=(ServedFile&&) = delete;
    ~ServedFile();

    /// Bytes of the file when it was opened.
    std::int64_t size() const { return size_; }
    /// Reads into a buffer.
    /// @return number of bytes read; less than `length` only at the end of the file or after an error
    std::size_t read(std::int64_t from, char* into, std::size_t length) const;

private:
    ServedFile(int descriptor, std::int64_t size) : descriptor_(descriptor), size_(size) {}

    int descriptor_;
    std::int64_t size_;
};

} // namespace qoro
