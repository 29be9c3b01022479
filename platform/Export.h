#pragma once

/// Marks what the shared libraries export; everything else in them is hidden. It applies to every declaration of the
/// namespace block that it is written on, as in `namespace QORO_EXPORT qoro {`.
#define QORO_EXPORT [[gnu::visibility("default")]]

/// As QORO_EXPORT, for what the library of the desktop uses of the controller's library. Not part of the interface: its
/// headers are not installed.
#define QORO_EXPORT_TO_DESKTOP QORO_EXPORT
