#pragma once

#include <memory>

typedef struct _GskRenderNode GskRenderNode;
typedef struct _GdkSnapshot GtkSnapshot;

namespace qoro
{

/// Deleter of DrawnNode.
struct DrawnNodeEnd {
    void operator()(GskRenderNode* node) const;
};
/// Something drawn, in the coordinates of the screen's surface; null if it is nothing.
using DrawnNode = std::unique_ptr<GskRenderNode, DrawnNodeEnd>;

/// Takes over a snapshot.
DrawnNode drawn_node(GtkSnapshot* snapshot);

} // namespace qoro
