#include "desktop/calendar/DesktopCalendar.h"

#include "desktop/cache/CacheFolder.h"
#include "desktop/calendar/EventText.h"
#include "desktop/glib/Owned.h"

#include <gio/gio.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

namespace qoro
{

namespace
{

constexpr const char* CalendarType = "text/calendar";
constexpr std::string_view FileEnd = ".ics";
constexpr std::int64_t FilesLast = 86'400 * std::int64_t{1'000'000'000};

using Program = ObjectRef<GAppInfo>;

void free_objects(GList* list)
{
    g_list_free_full(list, g_object_unref);
}
/// A list that owns its objects.
using ObjectList = Owned<GList, free_objects>;

/// The viewer's default program comes first, unless it does not declare support for calendars: a default that only
/// opens the file as plain text is not a calendar.
Program calendar_program()
{
    Program chosen(g_app_info_get_default_for_type(CalendarType, FALSE));
    const char** const types = chosen ? g_app_info_get_supported_types(chosen.get()) : nullptr;
    if (types && g_strv_contains(types, CalendarType))
        return chosen;
    const ObjectList programs(g_app_info_get_recommended_for_type(CalendarType));
    return programs ? new_ref(G_APP_INFO(programs->data)) : nullptr;
}

void remove_old_files(const CacheFolder& folder)
{
    const std::int64_t now = std::time(nullptr) * std::int64_t{1'000'000'000};
    for (const std::string& name : folder.names()) {
        const bool ours = name.ends_with(FileEnd) || name.ends_with(std::string(FileEnd) + ".part");
        const auto touched = ours ? folder.touched(name) : std::nullopt;
        if (touched && now - *touched > FilesLast)
            folder.remove(name);
    }
}

/// @return whether the program was started
bool open_with(const Program& program, const std::string& path)
{
    const ObjectList files(g_list_append(nullptr, g_file_new_for_path(path.c_str())));
    Error error;
    const bool started = g_app_info_launch(program.get(), files.get(), nullptr, error.out());
    if (!started)
        g_message("%s was not started: %s", g_app_info_get_id(program.get()), error.message());
    return started;
}

} // namespace

std::string DesktopCalendar::default_folder()
{
    return (std::filesystem::path(g_get_user_cache_dir()) / "qoro-ad" / "calendar").string();
}

bool DesktopCalendar::available()
{
    return options_.allowed && (options_.stand_in || calendar_program());
}

// The result is passed to a page, so it contains no local paths.
NSString DesktopCalendar::add(const CalendarEvent& event)
{
    const Program program = options_.allowed && !options_.stand_in ? calendar_program() : nullptr;
    if (!program && !(options_.allowed && options_.stand_in))
        return "this device has no calendar";
    const std::string identifier = take_text(g_uuid_string_random());
    const NSString text = event_text(event, {.uid = identifier, .made = std::time(nullptr)});
    if (!text)
        return "timezone is \"" + event.clock.zone.text() + "\": expected one that this device knows";
    if (options_.stand_in) {
        options_.stand_in(text.text());
        return nullptr;
    }
    const std::string name = identifier + std::string(FileEnd);
    try {
        const CacheFolder folder = CacheFolder::make(options_.folder);
        remove_old_files(folder);
        folder.write(name, text.text());
        if (open_with(program, (std::filesystem::path(options_.folder) / name).string()))
            return nullptr;
        folder.remove(name);
    } catch (const std::system_error& unwritable) {
        return "the event could not be written: " + unwritable.code().message();
    }
    return "the calendar could not be started";
}

} // namespace qoro
