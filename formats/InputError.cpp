#include "formats/InputError.h"

namespace qoro
{

// Not inline: GCC 12 warns of the concatenation, wrongly, in hosts that are compiled with -O3 -Wall.
InputError::InputError(const std::string& file, const std::string& path, const std::string& complaint)
    : std::runtime_error(file + ": " + (path.empty() ? "" : path + ": ") + complaint)
{
}

} // namespace qoro
