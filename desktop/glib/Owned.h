#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

typedef struct _GClosure GClosure;
typedef struct _GError GError;
typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GSource GSource;

namespace qoro
{

// Owners of values from GLib and its libraries. Each releases its value when it is destroyed; null needs no release. A
// value belongs to one owner: std::unique_ptr and the classes below cannot be copied. The owners lock nothing; one
// thread at a time may use an owner.

/// Deleter that calls a C function: Owned<GBytes, g_bytes_unref>.
template <auto release>
struct Release {
    template <typename T>
    void operator()(T* value) const
    {
        release(value);
    }
};
template <typename T, auto release>
using Owned = std::unique_ptr<T, Release<release>>;

struct UnrefObject {
    void operator()(void* object) const;
};
/// A reference to a GObject.
template <typename T>
using ObjectRef = std::unique_ptr<T, UnrefObject>;

/// Takes over a reference that a function has returned (transfer full). Null stays null.
template <typename T>
ObjectRef<T> adopt(T* object)
{
    return ObjectRef<T>(object);
}
/// Implementation of new_ref; returns its argument.
void* ref_object(void* object);
/// Adds a reference to an object that has another owner (transfer none). Null stays null.
template <typename T>
ObjectRef<T> new_ref(T* object)
{
    return ObjectRef<T>(object ? static_cast<T*>(ref_object(object)) : nullptr);
}
/// Implementation of sink_ref; returns its argument.
void* sink_object(void* object);
/// Takes over a new object's floating reference, such as that of a widget. The object must not be null.
template <typename T>
ObjectRef<T> sink_ref(T* object)
{
    return ObjectRef<T>(static_cast<T*>(sink_object(object)));
}

/// Frees a string that GLib has allocated and returns its text; empty for null.
std::string take_text(char* text);

struct EndSource {
    void operator()(GSource* source) const;
};
/// Owns a source. Releasing it also removes it from its context.
using OwnedSource = std::unique_ptr<GSource, EndSource>;

struct UnrefLoop {
    void operator()(GMainContext* context) const;
    void operator()(GMainLoop* loop) const;
};
using ContextRef = std::unique_ptr<GMainContext, UnrefLoop>;
using LoopRef = std::unique_ptr<GMainLoop, UnrefLoop>;

/// The error of a call.
class Error
{
public:
    Error() = default;
    /// Takes over an error; may be null.
    explicit Error(GError* error) : error_(error) {}
    ~Error() { clear(); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    /// Where a function stores its error. Releases the previous one.
    GError** out()
    {
        clear();
        return &error_;
    }
    explicit operator bool() const { return error_ != nullptr; }
    /// Null without an error.
    const GError* get() const { return error_; }
    /// The reason in words; empty without an error. Valid until the next call of out(), at most as long as this object.
    const char* message() const;

private:
    void clear();

    GError* error_ = nullptr;
};

/// A timeout or another source of GLib's default main context, by its number. Its destruction removes the source. A
/// source that removes itself (G_SOURCE_REMOVE) must call forget().
class SourceId
{
public:
    SourceId() = default;
    ~SourceId() { reset(); }
    SourceId(const SourceId&) = delete;
    SourceId& operator=(const SourceId&) = delete;

    /// Removes the source, if there is one, and keeps another in its place.
    /// @param id 0: no other source
    void reset(unsigned id = 0);
    /// Forgets the source, which has removed itself.
    void forget() { id_ = 0; }
    explicit operator bool() const { return id_ != 0; }

private:
    unsigned id_ = 0;
};

/// Signal handlers of an object of this program. Its destruction disconnects them. An emitter may be destroyed before.
class Connections
{
public:
    Connections() = default;
    ~Connections() { clear(); }
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    /// Connects a handler, as g_signal_connect does.
    /// @param emitter a GObject
    /// @param handler a function with the parameters of the signal, then a pointer to the data's type
    /// @param data must outlive the connection
    template <typename Result, typename... Parameters>
    void add(void* emitter, const char* signal, Result (*handler)(Parameters...), void* data)
    {
        connect(emitter, signal, reinterpret_cast<void (*)()>(handler), data, false);
    }
    /// As add(), but the handler is called after those of add(), as with g_signal_connect_after.
    template <typename Result, typename... Parameters>
    void add_after(void* emitter, const char* signal, Result (*handler)(Parameters...), void* data)
    {
        connect(emitter, signal, reinterpret_cast<void (*)()>(handler), data, true);
    }
    /// Disconnects every handler. A handler may call this, and may destroy the object.
    void clear();

private:
    void connect(void* emitter, const char* signal, void (*handler)(), void* data, bool after);

    // Invalidating a closure disconnects it, and an emitter's destruction invalidates its closures, so the emitters
    // need not be known.
    std::vector<GClosure*> handlers_;
};

} // namespace qoro
