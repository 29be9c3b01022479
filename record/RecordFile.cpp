#include "record/RecordFile.h"

#include "formats/InputError.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>
#include <utility>

namespace qoro
{

namespace
{
constexpr std::string_view Closing = "\n]}\n";
constexpr std::string_view NoAd = "{\"recording\":\"\"}\n";
} // namespace

RecordFile::RecordFile(std::string path)
    : path_(std::move(path)), file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600))
{
    if (file_ < 0)
        throw InputError(path_, "", std::strerror(errno));
    // The file is complete JSON before an ad opens, too. The head of a recording is longer and replaces it.
    if (pwrite(file_, NoAd.data(), NoAd.size(), 0) != static_cast<ssize_t>(NoAd.size()))
        throw InputError(path_, "", std::strerror(errno));
}

RecordFile::~RecordFile()
{
    flush();
    close(file_);
}

void RecordFile::begin(std::string_view head)
{
    write(std::string(head));
}

void RecordFile::add(std::string_view entry)
{
    if (failed_)
        return;
    waiting_ += std::exchange(empty_, false) ? "\n" : ",\n";
    waiting_ += entry;
}

void RecordFile::flush()
{
    if (!waiting_.empty())
        write(std::exchange(waiting_, {}));
}

/// One call replaces the brackets by the text and new brackets.
void RecordFile::write(const std::string& text)
{
    if (failed_)
        return;
    std::string whole = text;
    whole += Closing;
    std::size_t done = 0;
    while (done < whole.size()) {
        const ssize_t written =
            pwrite(file_, whole.data() + done, whole.size() - done, end_ + static_cast<off_t>(done));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            failed_ = true;
            std::cerr << "qoro-ad: " << path_ << ": the recording ends here: " << std::strerror(errno) << std::endl;
            return;
        }
        done += static_cast<std::size_t>(written);
    }
    end_ += static_cast<long>(text.size());
}

} // namespace qoro
