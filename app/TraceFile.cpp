#include "app/TraceFile.h"

#include "formats/InputError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <unistd.h>

namespace qoro
{

struct TraceFile::File {
    File(const std::string& path, std::FILE* opened) : name(path == "-" ? "standard output" : path), stream(opened) {}
    ~File()
    {
        if (stream && stream != stdout)
            std::fclose(stream);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const std::string name;
    std::FILE* const stream;
    bool failed = false;
};

TraceFile::TraceFile(const std::string& path)
    : file_(std::make_shared<File>(path, path == "-" ? stdout : std::fopen(path.c_str(), "wb")))
{
    if (!file_->stream)
        throw InputError(path, "", std::strerror(errno));
}

TraceFormat TraceFile::format() const
{
    return isatty(fileno(file_->stream)) ? TraceFormat::Text : TraceFormat::Json;
}

LineSink TraceFile::sink() const
{
    return [file = file_](std::string_view line) {
        if (file->failed)
            return;
        // Flush each event, so that a reader can follow the trace.
        if (std::fwrite(line.data(), 1, line.size(), file->stream) == line.size() && std::fflush(file->stream) == 0)
            return;
        file->failed = true;
        std::cerr << "qoro-ad: " << file->name << ": the trace ends here: " << std::strerror(errno) << std::endl;
    };
}

bool TraceFile::has_failed() const
{
    return file_->failed;
}

} // namespace qoro
