#include "desktop/screen/Surface.h"

#include <gtk/gtk.h>

namespace qoro
{

struct QoroSurface {
    GtkWidget parent;
    GtkWidget* glass;
    SurfaceOwner* owner;
};

struct QoroSurfaceClass {
    GtkWidgetClass parent;
};

G_DEFINE_TYPE(QoroSurface, qoro_surface, GTK_TYPE_WIDGET)

struct QoroGlass {
    GtkWidget parent;
};

struct QoroGlassClass {
    GtkWidgetClass parent;
};

G_DEFINE_TYPE(QoroGlass, qoro_glass, GTK_TYPE_WIDGET)

namespace
{

SurfaceOwner* owner_of(void* surface)
{
    return static_cast<QoroSurface*>(surface)->owner;
}

void measure_surface(GtkWidget* widget, GtkOrientation orientation, int, int* minimum, int* natural, int*, int*)
{
    const SurfaceOwner* owner = owner_of(widget);
    *minimum = 0;
    *natural = !owner                                      ? 0
               : orientation == GTK_ORIENTATION_HORIZONTAL ? owner->natural_width()
                                                           : owner->natural_height();
}

void allocate_surface(GtkWidget* widget, int width, int height, int)
{
    gtk_widget_allocate(reinterpret_cast<QoroSurface*>(widget)->glass, width, height, -1, nullptr);
    if (SurfaceOwner* owner = owner_of(widget))
        owner->allocate(width, height);
}

void snapshot_surface(GtkWidget* widget, GtkSnapshot* snapshot)
{
    if (SurfaceOwner* owner = owner_of(widget))
        owner->draw(snapshot);
}

gboolean focus_surface(GtkWidget* widget, GtkDirectionType direction)
{
    SurfaceOwner* owner = owner_of(widget);
    return owner && owner->move_focus(direction != GTK_DIR_TAB_BACKWARD);
}

gboolean glass_contains(GtkWidget* glass, double x, double y)
{
    SurfaceOwner* owner = owner_of(gtk_widget_get_parent(glass));
    return owner && owner->keeps(x, y);
}

void dispose_surface(GObject* object)
{
    surface_release(GTK_WIDGET(object));
    G_OBJECT_CLASS(qoro_surface_parent_class)->dispose(object);
}

} // namespace

static void qoro_glass_init(QoroGlass*)
{
}

static void qoro_glass_class_init(QoroGlassClass* type)
{
    GTK_WIDGET_CLASS(type)->contains = glass_contains;
}

static void qoro_surface_init(QoroSurface* self)
{
    gtk_widget_set_overflow(GTK_WIDGET(self), GTK_OVERFLOW_HIDDEN);
    self->glass = GTK_WIDGET(g_object_new(qoro_glass_get_type(), nullptr));
    // Hidden from assistive technology. The role "none" is not an alternative: GTK counts such a widget as a child, but
    // cannot name it.
    gtk_accessible_update_state(GTK_ACCESSIBLE(self->glass), GTK_ACCESSIBLE_STATE_HIDDEN, TRUE, -1);
    gtk_widget_set_parent(self->glass, GTK_WIDGET(self));
}

static void qoro_surface_class_init(QoroSurfaceClass* type)
{
    G_OBJECT_CLASS(type)->dispose = dispose_surface;
    GTK_WIDGET_CLASS(type)->focus = focus_surface;
    GTK_WIDGET_CLASS(type)->measure = measure_surface;
    GTK_WIDGET_CLASS(type)->size_allocate = allocate_surface;
    GTK_WIDGET_CLASS(type)->snapshot = snapshot_surface;
}

GtkWidget* surface_new(SurfaceOwner& owner)
{
    auto* surface =
        GTK_WIDGET(g_object_new(qoro_surface_get_type(), "accessible-role", GTK_ACCESSIBLE_ROLE_GROUP, nullptr));
    reinterpret_cast<QoroSurface*>(surface)->owner = &owner;
    return surface;
}

void surface_release(GtkWidget* surface)
{
    reinterpret_cast<QoroSurface*>(surface)->owner = nullptr;
    while (GtkWidget* child = gtk_widget_get_first_child(surface))
        gtk_widget_unparent(child);
}

} // namespace qoro
