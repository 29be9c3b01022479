#pragma once

#include "session/Trace.h"

#include <cstdio>
#include <memory>
#include <string>

namespace qoro
{

/// Where a trace is written to, line by line as it grows.
class TraceFile
{
public:
    /// @param path "-" for standard output
    /// @throws InputError when the file cannot be written
    explicit TraceFile(const std::string& path);

    /// Readable lines for a terminal, JSON for everything else.
    TraceFormat format() const;
    LineSink sink() const;

private:
    std::shared_ptr<std::FILE> file_;
};

} // namespace qoro
