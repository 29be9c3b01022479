#pragma once

#include "formats/AdInput.h"
#include "formats/DeviceModels.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace qoro
{

/// The command line of `qoro-ad import`.
struct ImportOptions {
    /// A file, "-" for standard input, or an http or https address.
    std::string tag;
    /// Its screen decides which media file is chosen.
    std::optional<DeviceModel> device = {};
    /// Prints what the tag leads to instead of writing files.
    bool describe = false;
    /// Folder that the ads are written to.
    std::string out_folder;
};

/// Adds the command's options, which parsing fills.
/// @param options outlives the parsing
void add_import_options(CLI::App& command, ImportOptions& options);

/// Resolves a VAST tag, and describes it or writes it as ad folders.
/// @return the exit status: 0, or 1 when there is no ad to write
/// @throws InputError for a text that is no VAST document, and for a file that cannot be read
int import_command(const ImportOptions& options);

/// The ads of a tag as import writes them, each as a scenario that opens it.
/// @param device its screen decides which file of the video is chosen; absent: as for fetch_tag()
/// @throws InputError for a tag that is no VAST document, and for one without an ad
std::vector<std::string> scenarios_of_tag(const AdInput& tag, const std::optional<DeviceModel>& device);

} // namespace qoro
