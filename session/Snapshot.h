#pragma once

#include "platform/Value.h"

namespace qoro
{

class Platform;
class QoroVideoWebViewController;

// What a controller is at one moment, every field by its own name, as nested mappings. Numbers of single precision
// are the shortest decimal that gives them back; a number that is not finite is null.

/// Scalar fields and properties, and the dictionaries of its own.
NSDictionary snapshot_fields(const QoroVideoWebViewController& controller);
/// Fields of the superclass, and its listeners: event name → how many; null once the table is gone.
NSDictionary snapshot_super(const QoroVideoWebViewController& controller);
/// The properties of the ad that the controller itself may set; null before an ad was opened.
NSDictionary snapshot_ad(const QoroVideoWebViewController& controller);
/// The current movie player; null when there is none.
NSDictionary snapshot_player(const QoroVideoWebViewController& controller);
/// Field name → interval, repeats and due (seconds), for the timers that run.
NSDictionary snapshot_timers(const QoroVideoWebViewController& controller);
/// View by name → its geometry, place and looks; null for a view that is not there.
NSDictionary snapshot_views(const QoroVideoWebViewController& controller);

/// Tells the platform's witness all of it as one line. Nothing without a witness.
void tell_snapshot(Platform& platform, const QoroVideoWebViewController& controller);

} // namespace qoro
