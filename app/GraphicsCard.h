#pragma once

namespace qoro
{

/// Whether this machine has a graphics card that can draw. Without one, OpenGL is a program that draws with the
/// processor.
bool has_graphics_card();

/// Settings of the whole process for a machine without a graphics card, for a program that called
/// prepare_program(false). Call it before GTK and other threads start:
/// - WebKit composites pages although GTK has no OpenGL. Otherwise a transparent page leaves trails behind moving
///   content. Only the page's process loads OpenGL; it hands its pictures over in shared memory;
/// - the page's process paints without OpenGL, which would compile a program for each way of painting.
///
/// Variables of WebKit's that are already set keep their values.
void composite_pages_without_card();

} // namespace qoro
