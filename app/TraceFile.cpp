#include "app/TraceFile.h"

#include "session/InputError.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace qoro
{

TraceFile::TraceFile(const std::string& path)
{
    if (path == "-") {
        file_ = std::shared_ptr<std::FILE>(stdout, [](std::FILE* file) { std::fflush(file); });
        return;
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        throw InputError(path, "", std::strerror(errno));
    file_ = std::shared_ptr<std::FILE>(file, std::fclose);
}

TraceFormat TraceFile::format() const
{
    return isatty(fileno(file_.get())) ? TraceFormat::Text : TraceFormat::Json;
}

LineSink TraceFile::sink() const
{
    return [file = file_](std::string_view line) {
        std::fwrite(line.data(), 1, line.size(), file.get());
        // Whoever follows the trace sees each event as it happens.
        std::fflush(file.get());
    };
}

} // namespace qoro
