#pragma once

#include <functional>

typedef struct _GAsyncResult GAsyncResult;
typedef struct _GObject GObject;

namespace qoro
{

/// Receives the result of an asynchronous call of GIO, from the object that was called. It must finish the call.
using AsyncDone = std::function<void(GObject* from, GAsyncResult* result)>;

/// The callback of an asynchronous call whose user data is async_data(): g_file_read_async(…, async_done,
/// async_data(done)).
void async_done(GObject* from, GAsyncResult* result, void* data);
/// User data for one call with async_done, which destroys it. Every asynchronous call ends, if need be as cancelled.
void* async_data(AsyncDone done);

} // namespace qoro
