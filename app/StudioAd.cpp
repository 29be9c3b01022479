#include "app/StudioAd.h"

#include "desktop/net/ContentType.h"
#include "formats/InputError.h"
#include "workbench/report/Report.h"

#include <gio/gio.h>

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace qoro
{

namespace
{

/// The most files that are watched, and the most files and folders that are searched for them. A larger folder is not
/// an ad's.
constexpr int MostWatched = 400;
constexpr int MostVisited = 4000;

/// Runs work on the main thread.
void post_to_main(std::function<void()> work)
{
    g_main_context_invoke_full(
        nullptr, G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>(std::move(work)),
        [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

std::string version_of(const std::string& path)
{
    std::error_code error;
    const auto changed = std::filesystem::last_write_time(path, error).time_since_epoch().count();
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return path + '\n' + std::to_string(changed) + '\n' + std::to_string(size);
}

} // namespace

StudioAd::StudioAd(const ReportOptions& options, std::function<void()> changed, std::function<void()> looked)
    : options_(options), changed_(std::move(changed)), looked_(std::move(looked)), base_(read_shown_ad(options)),
      files_([this] { read_again(); })
{
    watch_files();
}

void StudioAd::read()
{
    try {
        base_ = read_shown_ad(options_);
        complaint_.clear();
        ++version_;
        findings_.reset();
        looks_ = false;
    } catch (const InputError& error) {
        complaint_ = error.what();
    }
}

void StudioAd::read_again()
{
    is_outdated_ = true;
    // Resolving a tag runs the main loop, where more can change.
    if (reads_)
        return;
    reads_ = true;
    while (std::exchange(is_outdated_, false))
        read();
    reads_ = false;
    watch_files();
    changed_();
}

void StudioAd::watch_files()
{
    namespace fs = std::filesystem;
    std::error_code error;
    if (!options_.ad.parts.steps_file.empty())
        files_.add(options_.ad.parts.steps_file);
    const fs::path file = fs::absolute(base_.file, error);
    if (!fs::is_regular_file(file, error))
        return;
    files_.add(file.string());
    // Beside a tag or a scenario, only videos are the ad's.
    const auto is_of_the_ad = [this](const fs::path& path) {
        return base_.kind == InputKind::Ad || std::string_view(content_type_of(path.string())).starts_with("video/");
    };
    int watched = 0;
    int visited = 0;
    for (fs::recursive_directory_iterator
             each(file.parent_path(), fs::directory_options::skip_permission_denied, error),
         end;
         !error && each != end && watched < MostWatched && ++visited < MostVisited; each.increment(error))
        if (is_of_the_ad(each->path()) && each->is_regular_file(error)) {
            files_.add(each->path().string());
            ++watched;
        }
    // What the ad names may appear later.
    for (const PlacedRemark& missing : base_.missing_files)
        if (const auto name =
                base_.kind == InputKind::Ad ? ScenarioText(base_.text).string(missing.path) : std::nullopt)
            files_.add((file.parent_path() / *name).string());
}

StudioAd::Findings StudioAd::look_at(const BaseScenario& base, const ReportOptions& options, Stills& cached)
{
    Findings found;
    ReportParts parts{.title = "", .scenario = base.scenario, .device = options.ad.parts.device};
    if (options.stills_of)
        parts.stills_of = [&](const std::string& address, std::size_t most) {
            const std::string file = video_file(base, address);
            if (file.empty())
                return std::vector<VideoStill>();
            const auto [place, is_new] = cached.try_emplace(version_of(file) + '\n' + std::to_string(most));
            if (is_new)
                place->second = options.stills_of(file, most);
            return found.stills[address] = place->second;
        };
    found.checked = check_ad(base, {});
    found.matrix = matrix_data(parts);
    return found;
}

void StudioAd::look()
{
    thread_.post(
        [base = base_, &options = options_, stills = stills_, version = version_, self = std::weak_ptr(self_)] {
            if (self.expired())
                return;
            auto found = std::make_shared<const Findings>(look_at(base, options, *stills));
            post_to_main([found = std::move(found), version, self] {
                const auto ad = self.lock();
                if (!ad || (*ad)->version_ != version)
                    return;
                (*ad)->findings_ = found;
                (*ad)->looked_();
            });
        });
}

const StudioAd::Findings* StudioAd::findings()
{
    if (!findings_ && !std::exchange(looks_, true))
        look();
    return findings_.get();
}

const StudioAd::Findings& StudioAd::wait_for_findings()
{
    if (!findings_)
        thread_.run([this] { findings_ = std::make_shared<const Findings>(look_at(base_, options_, *stills_)); });
    return *findings_;
}

ReportParts StudioAd::parts(ScenarioText scenario) const
{
    return {.title = title_of(base_.file),
            .scenario = std::move(scenario),
            .device = options_.ad.parts.device,
            .remarks = remark_lines(base_)};
}

} // namespace qoro
