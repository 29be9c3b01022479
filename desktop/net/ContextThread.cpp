#include "desktop/net/ContextThread.h"

#include <gio/gio.h>

#include <future>
#include <pthread.h>
#include <utility>

namespace qoro
{

namespace
{
constexpr int LastTurns = 100;
} // namespace

ContextThread::ContextThread(const char* name)
    : context_(g_main_context_new()), thread_([this, name] {
          pthread_setname_np(pthread_self(), name);
          g_main_context_push_thread_default(context());
          while (!over_)
              g_main_context_iteration(context(), TRUE);
          // Closed connections release their memory in further iterations. Their number is limited, in case a source
          // never stops.
          for (int turns = 0; turns < LastTurns && g_main_context_iteration(context(), FALSE); ++turns) {
          }
          g_main_context_pop_thread_default(context());
      })
{
}

ContextThread::~ContextThread()
{
    post([this] { over_ = true; });
    thread_.join();
}

void ContextThread::post(std::function<void()> work)
{
    const Owned<GSource, g_source_unref> source(g_idle_source_new());
    g_source_set_priority(source.get(), G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source.get(),
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>(std::move(work)),
        [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    g_source_attach(source.get(), context());
}

void ContextThread::run(const std::function<void()>& work)
{
    std::promise<void> done;
    post([&work, &done] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

void ContextThread::run_while(const std::function<bool()>& condition)
{
    run([this, &condition] {
        while (condition())
            g_main_context_iteration(context(), TRUE);
    });
}

} // namespace qoro
