#include "kit/Accessible.h"

#include "kit/CountDownLook.h"
#include "kit/ScreenTexts.h"
#include "platform/Platform.h"
#include "views/ViewNode.h"

#include <algorithm>

namespace qoro
{

namespace
{

using namespace screen_texts;

std::string translated(const ViewNode& view, const char* text)
{
    return view.platform.translation().translate(text);
}

/// The view's label, or else its text. An empty label counts as absent.
std::string own_words(const ViewNode& view)
{
    const NSString& label = view.accessibility_label;
    return label.length() > 0 ? label.text() : view.text ? view.text.text() : std::string();
}

Accessible button(const ViewNode& view)
{
    if (view.targets.empty())
        return {};
    Accessible says{.role = Accessible::Role::Button, .name = own_words(view), .usable = view.takes_touches};
    if (!says.name.empty())
        return says;
    const ControlNames& names = view.platform.shared<ControlNames>();
    const auto picture =
        std::ranges::find(names.pictures, view.image.accessibilityIdentifier(), &ControlNames::Picture::picture);
    if (picture != names.pictures.end()) {
        says.name = translated(view, picture->name);
        says.on = picture->on;
        return says;
    }
    const auto action = std::ranges::find(names.actions, view.targets.front().name(), &ControlNames::Action::action);
    if (action != names.actions.end())
        says.name = translated(view, action->name);
    return says;
}

Accessible with_words(const ViewNode& view, Accessible::Role role)
{
    std::string words = own_words(view);
    return words.empty() ? Accessible{} : Accessible{.role = role, .name = std::move(words)};
}

Accessible named(const ViewNode& view, Accessible::Role role, const char* otherwise)
{
    std::string words = own_words(view);
    return {.role = role, .name = words.empty() ? translated(view, otherwise) : std::move(words)};
}

std::string time_left(const ViewNode& countdown)
{
    const long seconds = whole_seconds_left(countdown.seconds);
    std::string text = countdown.platform.translation().translate(SecondsLeft, static_cast<unsigned long>(seconds));
    if (const std::size_t number = text.find("%d"); number != std::string::npos)
        text.replace(number, 2, std::to_string(seconds));
    return text;
}

} // namespace

Accessible accessible(const ViewNode& view)
{
    using Role = Accessible::Role;
    switch (view.kind) {
    case ViewNode::Kind::Button:
        return button(view);
    case ViewNode::Kind::Label:
        return with_words(view, Role::Text);
    case ViewNode::Kind::ImageView:
        return with_words(view, Role::Image);
    case ViewNode::Kind::Video:
        return named(view, Role::Video, Video);
    case ViewNode::Kind::WebView:
        return named(view, Role::Page, AdPage);
    case ViewNode::Kind::CountDown:
        return {.role = Role::Timer, .name = time_left(view)};
    case ViewNode::Kind::Spinner:
        return named(view, Role::Wait, Loading);
    case ViewNode::Kind::View:
    case ViewNode::Kind::Window:
    case ViewNode::Kind::Slider: // never visible: the device's keys change the volume
    case ViewNode::Kind::VolumeView:
        break;
    }
    return {};
}

} // namespace qoro
