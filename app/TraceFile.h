#pragma once

#include "formats/Trace.h"

#include <memory>
#include <string>

namespace qoro
{

/// A trace's output, written line by line. When a write fails (full disk, broken pipe), one line on standard error
/// reports it and the trace ends.
class TraceFile
{
public:
    /// @param path "-" for standard output
    /// @throws InputError when the file cannot be written
    explicit TraceFile(const std::string& path);

    /// Text for a terminal, JSON otherwise.
    TraceFormat format() const;
    /// A sink that writes to the file. May outlive this object.
    LineSink sink() const;
    /// Whether the trace is incomplete because of a write error.
    bool has_failed() const;

private:
    struct File;

    const std::shared_ptr<File> file_;
};

} // namespace qoro
