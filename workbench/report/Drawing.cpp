#include "workbench/report/Drawing.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Base64.h"
#include "formats/Fields.h"
#include "kit/Accessible.h"
#include "simulator/Simulation.h"
#include "views/HeldTurn.h"
#include "views/Turns.h"
#include "views/ViewNode.h"
#include "workbench/detail/Json.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <unordered_map>
#include <utility>

namespace qoro
{

namespace
{

using detail::Json;
using Kind = ViewNode::Kind;

/// A report is sent by mail: pictures beyond this are left out.
constexpr std::size_t MostPictureBytes = 900'000;
/// Below it a view cannot be seen.
constexpr double LeastAlpha = 0.004;
/// A button's title as a display draws it without a colour.
constexpr UIColor White{1, 1, 1, 1, true};

const char* name_of(Kind kind)
{
    switch (kind) {
    case Kind::Button:
        return "button";
    case Kind::Label:
        return "label";
    case Kind::ImageView:
        return "image";
    case Kind::Window:
        return "window";
    case Kind::WebView:
        return "page";
    case Kind::Video:
        return "video";
    case Kind::CountDown:
        return "countdown";
    case Kind::Spinner:
        return "spinner";
    case Kind::View:
    case Kind::Slider:
    case Kind::VolumeView:
        break;
    }
    return "view";
}

const char* name_of(Symbol symbol)
{
    switch (symbol) {
    case Symbol::Close:
        return "close";
    case Symbol::CloseOnDisc:
        return "closeOnDisc";
    case Symbol::Back:
        return "back";
    case Symbol::Forward:
        return "forward";
    case Symbol::Reload:
        return "reload";
    case Symbol::Lock:
        return "lock";
    case Symbol::OpenLock:
        return "openLock";
    case Symbol::Blank:
        break;
    }
    return "";
}

/// To a thousandth, which is finer than any display; a whole number as such.
Json number(double value)
{
    if (!std::isfinite(value))
        return 0;
    const double rounded = std::round(value * 1000) / 1000;
    if (std::abs(rounded) < 1e9 && rounded == std::trunc(rounded))
        return static_cast<std::int64_t>(rounded);
    return rounded;
}

std::string css(const UIColor& color)
{
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string text = "#";
    const auto append = [&](double part) {
        const auto byte = static_cast<unsigned>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
        text += Digits[byte >> 4];
        text += Digits[byte & 15U];
    };
    append(color.red);
    append(color.green);
    append(color.blue);
    if (color.alpha < 1)
        append(color.alpha);
    return text;
}

int in_degrees(double angle)
{
    return static_cast<int>(std::lround(angle * 180 / std::numbers::pi));
}

void describe_font(Json& json, const ViewNode& label, const UIColor& ink)
{
    json["font"] = Json::array({label.font.family, number(label.font.size)});
    json["ink"] = css(ink);
}

void describe_shadow(Json& json, const UIColor& color, CGSize offset)
{
    if (color && color.alpha > 0)
        json["shadow"] = Json::array({number(offset.width), number(offset.height), css(color)});
}

void describe_label(Json& json, const ViewNode& label)
{
    if (label.text.length() == 0)
        return;
    constexpr int Centered = 1;
    json["text"] = label.text.text();
    describe_font(json, label, label.text_color ? label.text_color : UIColor::blackColor());
    describe_shadow(json, label.text_shadow_color, label.text_shadow_offset);
    if (label.text_alignment == Centered)
        json["align"] = "center";
    else if (label.text_alignment == NSTextAlignmentRight)
        json["align"] = "right";
    if (label.number_of_lines != 1)
        json["lines"] = label.number_of_lines;
    if (label.line_break_mode != 0)
        json["break"] = label.line_break_mode;
}

void describe_title(Json& json, const ViewNode& button)
{
    if (button.text.length() == 0 || !button.title_label)
        return;
    const ViewNode& label = *button.title_label;
    json["text"] = button.text.text();
    describe_font(json, label, label.text_color ? label.text_color : White);
    describe_shadow(json, button.title_shadow_color, label.text_shadow_offset);
    json["align"] = "center";
}

void describe_symbol(Json& json, const ViewNode& view)
{
    if (view.symbol == Symbol::Blank)
        return;
    json["symbol"] = name_of(view.symbol);
    json["ink"] = css(view.text_color ? view.text_color : UIColor::blackColor());
}

const char* fit_of(MPMovieScalingMode mode)
{
    switch (mode) {
    case MPMovieScalingModeAspectFill:
        return "cover";
    case MPMovieScalingModeFill:
        return "stretch";
    case MPMovieScalingModeNone:
    case MPMovieScalingModeAspectFit:
        break;
    }
    return "contain";
}

/// The media type of a picture; empty for bytes that no browser shows.
std::string_view type_of(std::string_view bytes)
{
    constexpr std::size_t ShortestPicture = 24;
    if (bytes.size() < ShortestPicture)
        return "";
    if (bytes.starts_with("\x89PNG\r\n\x1a\n"))
        return "image/png";
    if (bytes.starts_with("\xff\xd8\xff"))
        return "image/jpeg";
    if (bytes.starts_with("GIF8"))
        return "image/gif";
    if (bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP")
        return "image/webp";
    return "";
}

/// The names of the controller's views.
std::unordered_map<const ViewNode*, std::string_view> names_of(const Simulation& simulation)
{
    std::unordered_map<const ViewNode*, std::string_view> names;
    if (const auto ad = simulation.living())
        for (const ViewField& field : view_fields())
            if (const auto node = field.get(*ad).node())
                names.emplace(node.get(), field.name);
    return names;
}

} // namespace

std::size_t TextTable::number_of(const std::string& text)
{
    const auto [place, is_new] = numbers_.try_emplace(text, texts_.size());
    if (is_new)
        texts_.push_back(text);
    return place->second;
}

std::size_t Draughtsman::picture_of(std::string_view bytes)
{
    // A picture is met again in every drawing.
    if (const auto known = known_pictures_.find(bytes); known != known_pictures_.end())
        return known->second;
    const std::string_view type = type_of(bytes);
    std::string address;
    if (!type.empty())
        address = "data:" + std::string(type) + ";base64," + to_base64(bytes);
    const std::size_t before = pictures_.texts().size();
    const std::size_t number = picture_bytes_ + address.size() <= MostPictureBytes ? pictures_.number_of(address)
                                                                                   : pictures_.number_of(std::string());
    if (pictures_.texts().size() > before)
        picture_bytes_ += pictures_.texts().back().size();
    known_pictures_.emplace(bytes, number);
    return number;
}

int turn_of(SimulatedPlatform& platform)
{
    const CGSize screen = platform.device().facts().screen.value_or(CGSize{});
    return in_degrees(
        held_turn(platform.device().orientation(), platform.device().status_bar_orientation(), screen, 0));
}

Drawing Draughtsman::draw(Simulation& simulation)
{
    SimulatedPlatform& platform = simulation.platform();
    const PlatformScope current(platform);
    Drawing drawing;
    drawing.turn = turn_of(platform);
    const auto names = names_of(simulation);

    const auto add = [&](const auto& self, const ViewNode& view, double alpha) -> void {
        alpha *= view.alpha;
        if (view.hidden || alpha < LeastAlpha)
            return;
        const Placement place = placement_on_screen(view);
        Json json{{"kind", name_of(view.kind)},
                  {"at", Json::array({number(place.center.x), number(place.center.y), number(place.bounds.width),
                                      number(place.bounds.height)})}};
        const std::size_t plain = json.size();
        if (view.background && view.background.alpha > 0)
            json["fill"] = css(view.background);
        if (view.corner_radius > 0)
            json["radius"] = number(view.corner_radius);
        switch (view.kind) {
        case Kind::Button:
            describe_title(json, view);
            describe_symbol(json, view);
            break;
        case Kind::Label:
            describe_label(json, view);
            break;
        case Kind::ImageView:
            describe_symbol(json, view);
            if (view.content_mode == UIViewContentModeScaleAspectFit)
                json["fit"] = "contain";
            break;
        case Kind::Video:
            json["fit"] = fit_of(view.scaling_mode);
            // A video that stalls keeps its picture.
            json["playable"] =
                view.player && (view.player->load_state() & (MPMovieLoadStatePlayable | MPMovieLoadStateStalled)) != 0;
            if (view.opaque && !view.background)
                json["fill"] = "#000000";
            break;
        case Kind::WebView:
            json["loaded"] = view.web && view.web->page_state().has_content;
            json["opaque"] = view.opaque;
            break;
        case Kind::CountDown:
            json["count"] = Json::array({number(view.seconds), number(view.seconds_full), number(view.ring_width)});
            break;
        case Kind::Spinner:
            json["spins"] = true;
            break;
        default:
            break;
        }
        if (view.image && (view.kind == Kind::Button || view.kind == Kind::ImageView))
            json["picture"] = picture_of(view.image.data().view());
        const bool touchable = view.kind == Kind::Button;
        if (const auto name = names.find(&view); name != names.end() && (touchable || json.size() > plain))
            json["name"] = name->second;
        if (touchable)
            if (const std::string label = accessible(view).name; !label.empty())
                json["label"] = label;
        if (const int turn = in_degrees(place.angle))
            json["turn"] = turn;
        if (alpha < 1)
            json["alpha"] = number(alpha);
        // A view that draws nothing is not part of the picture.
        if (json.size() > plain + (json.contains("turn") ? 1U : 0U) + (json.contains("alpha") ? 1U : 0U))
            drawing.views.push_back(views_.number_of(json.dump(-1, ' ', false, Json::error_handler_t::replace)));
        for (const auto& subview : view.subviews)
            self(self, *subview, alpha);
    };
    for (const auto& window : platform.shared<WindowList>().visible_from_below())
        add(add, *window, 1);
    return drawing;
}

} // namespace qoro
