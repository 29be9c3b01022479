#pragma once

typedef struct _GdkSnapshot GtkSnapshot;
typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// Who fills a surface: GTK's questions, passed on.
class SurfaceOwner
{
public:
    virtual ~SurfaceOwner() = default;
    virtual int natural_width() const = 0;
    virtual int natural_height() const = 0;
    /// The surface has got its room: every child gets its own.
    virtual void allocate(int width, int height) = 0;
    virtual void draw(GtkSnapshot* snapshot) = 0;
    /// Whether what happens at a point is the surface's own; else it goes to the child that lies there.
    virtual bool keeps(double x, double y) const = 0;
    /// The viewer goes on to the next control, or back to the one before. Answers whether there is one.
    virtual bool move_focus(bool forward) = 0;
};

/// A widget whose children its owner adds, orders, places and draws. It hides what overflows. A pane of glass lies
/// before the children, and lets through what is theirs: for the pointer that moves and scrolls as for the one that
/// presses.
GtkWidget* surface_new(SurfaceOwner& owner);
/// The owner goes: the children are let go too.
void surface_release(GtkWidget* surface);

} // namespace qoro
