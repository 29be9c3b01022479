#pragma once

#include <string>
#include <string_view>

namespace qoro
{

/// A recording on disk: a head and a list of entries, one a line. Complete JSON after every flush, so that a program
/// that is killed leaves what it has flushed. When a write fails, one line on standard error reports it, and the
/// recording ends.
class RecordFile
{
public:
    /// @throws InputError when the file cannot be written
    explicit RecordFile(std::string path);
    /// Flushes.
    ~RecordFile();
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    /// Writes the beginning at once, up to the opened list.
    void begin(std::string_view head);
    /// Adds an entry: one line without a line break.
    void add(std::string_view entry);
    /// Writes what was added.
    void flush();
    bool has_failed() const { return failed_; }

private:
    void write(const std::string& text);

    const std::string path_;
    int file_ = -1;
    /// Where the next text goes, before the closing brackets.
    long end_ = 0;
    bool empty_ = true;
    bool failed_ = false;
    std::string waiting_;
};

} // namespace qoro
