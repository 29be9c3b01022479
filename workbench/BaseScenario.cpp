#include "workbench/BaseScenario.h"

namespace qoro
{

PlacedRemark placed_remark(const std::string& line, const std::string& file)
{
    const std::string before = file + ": ";
    const std::string text = line.starts_with(before) ? line.substr(before.size()) : line;
    const std::size_t colon = text.find(": ");
    if (!text.starts_with('/') || colon == std::string::npos)
        return {"", text};
    return {text.substr(0, colon), text.substr(colon + 2)};
}

} // namespace qoro
