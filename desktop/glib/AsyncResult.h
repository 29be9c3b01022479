#pragma once

#include <functional>

typedef struct _GAsyncResult GAsyncResult;
typedef struct _GObject GObject;

namespace qoro
{

/// Receives the result of an asynchronous call of GIO, and the object that was called, which is null for a static call.
/// It must call the matching function …_finish.
using AsyncDone = std::function<void(GObject* from, GAsyncResult* result)>;

/// The callback of an asynchronous call whose user data is async_data(): g_file_read_async(…, async_done,
/// async_data(done)).
void async_done(GObject* from, GAsyncResult* result, void* data);
/// User data for one call with async_done, which destroys it after its use. GIO completes every asynchronous call, also
/// a cancelled one, so the data never leaks.
void* async_data(AsyncDone done);

} // namespace qoro
