#include "desktop/screen/DrawnNode.h"

#include <gtk/gtk.h>

namespace qoro
{

void DrawnNodeEnd::operator()(GskRenderNode* node) const
{
    gsk_render_node_unref(node);
}

DrawnNode drawn_node(GtkSnapshot* snapshot)
{
    return DrawnNode(gtk_snapshot_free_to_node(snapshot));
}

} // namespace qoro
