#pragma once

#include "session/Trace.h"

#include <memory>
#include <string>

namespace qoro
{

/// Where a trace is written to, line by line as it grows. When the file takes no more, on a full disk or a broken pipe,
/// one line on standard error says so, and the trace ends there.
class TraceFile
{
public:
    /// @param path "-" for standard output
    /// @throws InputError when the file cannot be written
    explicit TraceFile(const std::string& path);

    /// Readable lines for a terminal, JSON for everything else.
    TraceFormat format() const;
    LineSink sink() const;
    /// Whether something of the trace is missing from the file.
    bool has_failed() const;

private:
    struct File;

    const std::shared_ptr<File> file_;
};

} // namespace qoro
