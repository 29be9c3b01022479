#pragma once

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// What a web engine offers to the screen: it draws itself, in a widget of its own.
class WidgetSource
{
public:
    virtual ~WidgetSource() = default;
    /// Stays the same as long as the engine lives, which takes it out of wherever it stands when it goes.
    virtual GtkWidget* widget() const = 0;
    /// Whether what lies beneath shows through where the page paints nothing; else that is white.
    virtual void set_transparent(bool transparent) = 0;
    /// Whether keys are the page's to write with: a text field or the like in it has the keyboard.
    virtual bool takes_text() const = 0;
};

} // namespace qoro
