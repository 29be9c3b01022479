#pragma once

typedef struct _GdkSnapshot GtkSnapshot;
typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// Delegate of a surface, which forwards GTK's calls to it.
class SurfaceOwner
{
public:
    virtual ~SurfaceOwner() = default;
    /// Preferred size in window points.
    virtual int natural_width() const = 0;
    virtual int natural_height() const = 0;
    /// The surface has a new size; places all children.
    virtual void allocate(int width, int height) = 0;
    /// Draws the surface with its children.
    virtual void draw(GtkSnapshot* snapshot) = 0;
    /// Whether the surface handles input at a point; otherwise the child at that point does.
    virtual bool keeps(double x, double y) = 0;
    /// Moves the focus to the next or the previous control. Returns false if there is no control.
    virtual bool move_focus(bool forward) = 0;
};

/// Creates a widget whose children the owner adds, orders, places and draws. Overflow is clipped. A transparent glass
/// widget covers the children and receives the input that the owner keeps; all other input, including motion and
/// scrolling, passes through to the children.
GtkWidget* surface_new(SurfaceOwner& owner);
/// Detaches the owner and removes all children.
void surface_release(GtkWidget* surface);

} // namespace qoro
