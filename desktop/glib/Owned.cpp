#include "desktop/glib/Owned.h"

#include <glib-object.h>

namespace qoro
{

void UnrefObject::operator()(void* object) const
{
    g_object_unref(object);
}

void* ref_object(void* object)
{
    return g_object_ref(object);
}

void* sink_object(void* object)
{
    return g_object_ref_sink(object);
}

std::string take_text(char* text)
{
    const Owned<char, g_free> owned(text);
    return text ? text : "";
}

void EndSource::operator()(GSource* source) const
{
    g_source_destroy(source);
    g_source_unref(source);
}

void UnrefLoop::operator()(GMainContext* context) const
{
    g_main_context_unref(context);
}

void UnrefLoop::operator()(GMainLoop* loop) const
{
    g_main_loop_unref(loop);
}

const char* Error::message() const
{
    return error_ ? error_->message : "";
}

void Error::clear()
{
    g_clear_error(&error_);
}

void SourceId::reset(unsigned id)
{
    if (const unsigned before = std::exchange(id_, id))
        g_source_remove(before);
}

void Connections::connect(void* emitter, const char* signal, void (*handler)(), void* data, bool after)
{
    GClosure* closure = g_cclosure_new(handler, data, nullptr);
    handlers_.push_back(g_closure_ref(closure));
    g_signal_connect_closure(emitter, signal, closure, after);
}

void Connections::clear()
{
    for (GClosure* closure : std::exchange(handlers_, {})) {
        g_closure_invalidate(closure);
        g_closure_unref(closure);
    }
}

} // namespace qoro
