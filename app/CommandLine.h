#pragma once

#include "app/Check.h"
#include "app/Explore.h"
#include "app/Report.h"
#include "app/Shrink.h"
#include "app/Simulate.h"

#ifdef QORO_DESKTOP
#include "app/Cache.h"
#include "app/Import.h"
#include "app/PlayOptions.h"
#include "app/Studio.h"
#endif

#include <CLI/CLI.hpp>

namespace qoro
{

/// The command line of `qoro-ad`: what it is parsed by, and what the manual page and the shells' completions are made
/// of.
class CommandLine
{
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// The description; parsing it fills the options.
    CLI::App& description() { return app_; }
    /// Runs the command that was parsed.
    /// @return the exit status
    /// @throws InputError, or another std::exception, for what the command reports as one line
    int run() const;
    /// Whether the command that was parsed needs nothing of the desktop: simulate, explore or shrink with scenarios,
    /// and merge.
    bool needs_no_desktop() const;

private:
    CLI::App app_;
#ifdef QORO_DESKTOP
    PlayOptions play_;
    CacheOptions cache_;
    ImportOptions import_;
    StudioOptions studio_;
#endif
    ReportOptions report_;
    SimulateOptions simulate_;
    CheckCommandOptions check_;
    ExploreOptions explore_;
    ShrinkCommandOptions shrink_;
    MergeOptions merge_;
};

} // namespace qoro
