#pragma once

typedef struct _JSCValue JSCValue;
typedef struct _WebKitUserContentManager WebKitUserContentManager;

namespace qoro
{

/// Knows whether the keys are a page's to write with: a text field, a list or the like has the keyboard in it. It
/// listens in every frame, where the page's own script can neither see nor call it.
class TextEntry
{
public:
    /// @param content of the one view whose page it is
    explicit TextEntry(WebKitUserContentManager* content);
    ~TextEntry();
    TextEntry(const TextEntry&) = delete;
    TextEntry& operator=(const TextEntry&) = delete;

    bool active() const { return active_; }
    /// The page is gone.
    void end() { active_ = false; }

private:
    static void told(WebKitUserContentManager* content, JSCValue* value, TextEntry* self);

    WebKitUserContentManager* const content_;
    bool active_ = false;
};

} // namespace qoro
