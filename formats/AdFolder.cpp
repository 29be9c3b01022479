#include "formats/AdFolder.h"

#include "formats/detail/Names.h"
#include "platform/Value.h"

#include <algorithm>
#include <system_error>
#include <vector>

namespace qoro
{

namespace
{

namespace fs = std::filesystem;

bool climbs(const fs::path& name)
{
    return std::ranges::find(name, "..") != name.end();
}

} // namespace

fs::path name_in_folder(std::string_view address)
{
    const std::string escaped(address.substr(0, address.find_first_of("?#")));
    const NSString decoded = stringByReplacingPercentEscapes(escaped);
    return fs::path(decoded ? decoded.text() : escaped).relative_path();
}

bool is_file_in_folder(const fs::path& name, const std::string& folder)
{
    std::error_code failed;
    const fs::path root = fs::canonical(folder, failed);
    const fs::path file = failed || climbs(name) ? fs::path() : fs::canonical(root / name, failed);
    return !failed && !file.empty() && std::ranges::mismatch(root, file).in1 == root.end() &&
           fs::is_regular_file(file, failed);
}

std::string file_suggestion(const fs::path& name, const std::string& folder)
{
    if (climbs(name))
        return "";
    std::vector<std::string> names;
    std::error_code failed;
    for (fs::directory_iterator each(fs::path(folder) / name.parent_path(), failed), end; !failed && each != end;
         each.increment(failed))
        if (each->is_regular_file(failed))
            names.push_back((name.parent_path() / each->path().filename()).string());
    std::ranges::sort(names);
    const std::vector<std::string_view> known(names.begin(), names.end());
    return detail::did_you_mean(name.string(), known);
}

} // namespace qoro
