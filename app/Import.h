#pragma once

#include "formats/DeviceModels.h"

#include <optional>
#include <string>

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

} // namespace qoro
