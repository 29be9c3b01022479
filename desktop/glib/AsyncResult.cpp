#include "desktop/glib/AsyncResult.h"

#include <memory>
#include <utility>

namespace qoro
{

void async_done(GObject* from, GAsyncResult* result, void* data)
{
    const std::unique_ptr<AsyncDone> done(static_cast<AsyncDone*>(data));
    (*done)(from, result);
}

void* async_data(AsyncDone done)
{
    return new AsyncDone(std::move(done));
}

} // namespace qoro
