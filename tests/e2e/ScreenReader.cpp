#include "tests/e2e/ScreenReader.h"

#include <atspi/atspi.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>

/// libatspi occasionally leaks a path when a control is destroyed while it is read. Only the slow unwinder attributes
/// the leak; the programs under test are not slowed down by it.
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libatspi\n";
}
extern "C" [[gnu::visibility("default")]] const char* __asan_default_options();
extern "C" const char* __asan_default_options()
{
    return "fast_unwind_on_malloc=0";
}
#endif

namespace qoro::test
{

namespace
{

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds Glance{50};
/// Only a missing object exceeds it.
constexpr std::chrono::seconds Patience{90};

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
using Accessible = std::unique_ptr<AtspiAccessible, Unref>;

std::string taken(char* text)
{
    std::string words = text ? text : "";
    g_free(text);
    return words;
}

std::vector<Accessible> children_of(AtspiAccessible* parent)
{
    std::vector<Accessible> children;
    const int count = atspi_accessible_get_child_count(parent, nullptr);
    for (int n = 0; n < count; ++n)
        if (AtspiAccessible* child = atspi_accessible_get_child_at_index(parent, n, nullptr))
            children.emplace_back(child);
    return children;
}

/// Null until the program is on the accessibility bus.
Accessible program(int process)
{
    static const bool started = atspi_init() == 0;
    if (!started)
        return nullptr;
    const Accessible desktop(atspi_get_desktop(0));
    for (Accessible& application : children_of(desktop.get()))
        if (atspi_accessible_get_process_id(application.get(), nullptr) == static_cast<unsigned>(process))
            return std::move(application);
    return nullptr;
}

/// Traverses an object and its descendants in tree order until one matches.
/// @param is_it called for each
/// @return whether one matched
bool walk(AtspiAccessible* thing, const std::function<bool(AtspiAccessible*)>& is_it)
{
    if (is_it(thing))
        return true;
    const int count = atspi_accessible_get_child_count(thing, nullptr);
    for (int n = 0; n < count; ++n)
        if (const Accessible child(atspi_accessible_get_child_at_index(thing, n, nullptr)); child)
            if (walk(child.get(), is_it))
                return true;
    return false;
}

Spoken spoken(AtspiAccessible* thing)
{
    Spoken says{.role = taken(atspi_accessible_get_role_name(thing, nullptr)),
                .name = taken(atspi_accessible_get_name(thing, nullptr))};
    const std::unique_ptr<AtspiStateSet, Unref> states(atspi_accessible_get_state_set(thing));
    const auto has = [&](AtspiStateType state) { return atspi_state_set_contains(states.get(), state) != 0; };
    says.focusable = has(ATSPI_STATE_FOCUSABLE);
    says.focused = has(ATSPI_STATE_FOCUSED);
    says.pressed = has(ATSPI_STATE_PRESSED);
    says.enabled = has(ATSPI_STATE_SENSITIVE);
    return says;
}

bool waited_until(const std::function<bool()>& comes)
{
    const auto until = Clock::now() + Patience;
    while (!comes()) {
        if (Clock::now() >= until)
            return false;
        std::this_thread::sleep_for(Glance);
    }
    return true;
}

} // namespace

std::vector<Spoken> ScreenReader::everything()
{
    std::vector<Spoken> announced;
    if (const Accessible found = program(process_))
        walk(found.get(), [&](AtspiAccessible* thing) {
            announced.push_back(spoken(thing));
            return false;
        });
    return announced;
}

std::optional<Spoken> ScreenReader::announces(const std::string& role, const std::string& name, Match match)
{
    std::optional<Spoken> announced;
    if (const Accessible found = program(process_))
        walk(found.get(), [&](AtspiAccessible* thing) {
            const std::string its = taken(atspi_accessible_get_name(thing, nullptr));
            if (match == Whole ? its != name : !its.starts_with(name))
                return false;
            if (Spoken says = spoken(thing); says.role == role)
                announced = std::move(says);
            return announced.has_value();
        });
    return announced;
}

std::optional<Spoken> ScreenReader::find(const std::string& role, const std::string& name, Match match)
{
    std::optional<Spoken> found;
    waited_until([&] {
        found = announces(role, name, match);
        return found.has_value();
    });
    return found;
}

bool ScreenReader::loses(const std::string& role, const std::string& name)
{
    return waited_until([&] { return !announces(role, name); });
}

std::string ScreenReader::focused()
{
    std::string name;
    if (const Accessible found = program(process_))
        walk(found.get(), [&](AtspiAccessible* thing) {
            const std::unique_ptr<AtspiStateSet, Unref> states(atspi_accessible_get_state_set(thing));
            const bool has_it = atspi_state_set_contains(states.get(), ATSPI_STATE_FOCUSED) != 0;
            if (has_it)
                name = taken(atspi_accessible_get_name(thing, nullptr));
            return has_it;
        });
    return name;
}

bool ScreenReader::focuses(const std::string& name)
{
    return waited_until([&] { return focused() == name; });
}

bool ScreenReader::use(const std::string& name)
{
    bool used = false;
    if (const Accessible found = program(process_))
        walk(found.get(), [&](AtspiAccessible* thing) {
            if (taken(atspi_accessible_get_name(thing, nullptr)) != name)
                return false;
            const std::unique_ptr<AtspiAction, Unref> action(atspi_accessible_get_action_iface(thing));
            used = action && atspi_action_do_action(action.get(), 0, nullptr);
            return used;
        });
    return used;
}

} // namespace qoro::test
