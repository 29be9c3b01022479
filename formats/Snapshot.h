#pragma once

#include "platform/Value.h"

namespace qoro
{

class Platform;
class QoroVideoWebViewController;

// The state of a controller at one moment, each field by its own name, as nested mappings. Single-precision numbers are
// the shortest decimal that reads back as the same value; a number that is not finite is null.

/// The controller's scalar fields and properties, and its own dictionaries.
NSDictionary snapshot_fields(const QoroVideoWebViewController& controller);
/// Fields of the superclass, and its listeners: event name → count; null once the table is destroyed.
NSDictionary snapshot_super(const QoroVideoWebViewController& controller);
/// The ad's properties that the controller itself may set; null before an ad is opened.
NSDictionary snapshot_ad(const QoroVideoWebViewController& controller);
/// The current movie player; null without one.
NSDictionary snapshot_player(const QoroVideoWebViewController& controller);
/// Field name → interval, repeats and due (seconds), for running timers.
NSDictionary snapshot_timers(const QoroVideoWebViewController& controller);
/// View name → geometry, parent and appearance; null for a view that does not exist.
NSDictionary snapshot_views(const QoroVideoWebViewController& controller);

/// Reports all of it to the platform's event sink as one event. No effect without a sink.
void emit_snapshot(Platform& platform, const QoroVideoWebViewController& controller);

} // namespace qoro
