#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace qoro
{

/// The file of an ad's folder that a relative address names: its path below the folder, without query and fragment,
/// with percent escapes decoded. It need not exist.
std::filesystem::path name_in_folder(std::string_view address);

/// Whether a name is a regular file of a folder, and no link leads out of the folder. A name with ".." is none.
bool is_file_in_folder(const std::filesystem::path& name, const std::string& folder);

/// Suffix for an error about a missing file: "; did you mean \"page.html\"?", with the nearest name among the files
/// beside it. Empty without any, and for a name that leaves the folder.
std::string file_suggestion(const std::filesystem::path& name, const std::string& folder);

} // namespace qoro
