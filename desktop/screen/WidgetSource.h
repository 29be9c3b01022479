#pragma once

#include <functional>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// Interface of a web engine to the screen: it draws itself in its own widget.
class WidgetSource
{
public:
    virtual ~WidgetSource() = default;
    /// A container, the same for the engine's lifetime, with the page's view as its child once that exists. The engine
    /// removes it from its parent when it is destroyed.
    virtual GtkWidget* widget() const = 0;
    /// Whether unpainted areas of the page are transparent; otherwise they are white.
    virtual void set_transparent(bool transparent) = 0;
    /// Whether a text field or similar element of the page has the keyboard focus.
    virtual bool takes_text() const = 0;

    /// Called when the page's view exists. May be empty.
    std::function<void()> on_view;
};

} // namespace qoro
