#pragma once

#include "desktop/glib/Owned.h"

typedef struct _JSCValue JSCValue;
typedef struct _WebKitUserContentManager WebKitUserContentManager;

namespace qoro
{

/// Tracks whether a text field, a list or a similar element of a page has the keyboard focus. A script listens in every
/// frame, in a script world that the page can neither see nor call.
class TextEntry
{
public:
    /// @param content of the single view that shows the page
    explicit TextEntry(WebKitUserContentManager* content);
    TextEntry(const TextEntry&) = delete;
    TextEntry& operator=(const TextEntry&) = delete;

    /// Whether the page needs the keys for text entry.
    bool active() const { return active_; }
    /// The page has ended.
    void end() { active_ = false; }

private:
    static void received(WebKitUserContentManager* content, JSCValue* value, TextEntry* self);

    bool active_ = false;
    Connections connections_;
};

} // namespace qoro
