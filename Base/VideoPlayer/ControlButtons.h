#pragma once

#include "Base/VideoPlayer/QoroVideoWebViewController.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace qoro
{

/// A button of the controller: one row of its table.
struct ControlButton {
    /// Where setButtonBarToScreen adds the button to the video and setButtonPosition places it.
    enum class Place : std::uint8_t {
        /// These two operations do not concern the button.
        Elsewhere,
        /// In the bottom bar. The buttons fill it from the right end, the last row first; a hidden button takes no
        /// room.
        BottomBar,
        /// In the middle of the video.
        Middle,
    };

    /// The field's name, by which traces and scenarios refer to the button.
    std::string_view name = {};
    /// The field.
    UIButton QoroVideoWebViewController::*field = nullptr;
    /// The field as a view.
    UIView (*view)(const QoroVideoWebViewController& controller) = nullptr;
    /// Decodes the first picture; null for a button that begins without one.
    UIImage (*picture)() = nullptr;
    /// The first action; null for a button that begins without one.
    Action (*action)(QoroVideoWebViewController& controller) = nullptr;
    /// Where the button is added and placed.
    Place place = Place::Elsewhere;
    /// Whether the button begins hidden.
    bool hidden = false;
    /// Whether removeControlButtons removes the button.
    bool endsWithVideo = true;
};

/// Every button of the controller, in order of creation.
std::span<const ControlButton> controlButtons();

/// Creates every button with its picture and its action; no button has a superview yet.
void createControlButtons(QoroVideoWebViewController& controller);

/// Removes the buttons whose endsWithVideo is true from their superviews and releases them.
void removeControlButtons(QoroVideoWebViewController& controller);

} // namespace qoro
