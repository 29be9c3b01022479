#include "formats/InputFile.h"

#include "formats/InputError.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace qoro
{

namespace
{
struct Close {
    void operator()(std::FILE* file) const
    {
        if (file != stdin)
            std::fclose(file);
    }
};
} // namespace

std::string read_input_file(const std::string& path)
{
    const std::unique_ptr<std::FILE, Close> file(path == "-" ? stdin : std::fopen(path.c_str(), "rb"));
    if (!file)
        throw InputError(path, "", std::strerror(errno));
    std::string text;
    std::array<char, 65536> piece;
    while (const std::size_t length = std::fread(piece.data(), 1, piece.size(), file.get())) {
        text.append(piece.data(), length);
        if (text.size() > LargestInput)
            throw InputError(path, "", "larger than 64 MiB");
    }
    if (std::ferror(file.get()))
        throw InputError(path, "", std::strerror(errno));
    return text;
}

} // namespace qoro
