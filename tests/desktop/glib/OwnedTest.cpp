#include "desktop/glib/Owned.h"

#include "desktop/glib/AsyncResult.h"
#include "desktop/glib/Liveness.h"

#include <gio/gio.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

namespace qoro::test
{
namespace
{

/// An object that counts its cancellations.
struct Emitter {
    void emit() const { g_signal_emit_by_name(object.get(), "cancelled"); }

    ObjectRef<GCancellable> object = adopt(g_cancellable_new());
};

void count(GCancellable*, int* calls)
{
    ++*calls;
}

void destroy(GCancellable*, std::unique_ptr<Connections>* connections)
{
    connections->reset();
}

TEST(Owned, AnObjectLivesWhileItIsReferredTo)
{
    auto first = adopt(g_cancellable_new());
    GObject* watched = G_OBJECT(first.get());
    g_object_add_weak_pointer(watched, reinterpret_cast<void**>(&watched));
    auto second = new_ref(first.get());
    first.reset();
    EXPECT_NE(watched, nullptr);
    second.reset();
    EXPECT_EQ(watched, nullptr);
}

TEST(Owned, AReferenceToNullIsNull)
{
    EXPECT_FALSE(new_ref(static_cast<GCancellable*>(nullptr)));
}

TEST(Owned, TextOfNullIsEmpty)
{
    EXPECT_EQ(take_text(nullptr), "");
    EXPECT_EQ(take_text(g_strdup("text")), "text");
}

TEST(Owned, AnErrorIsReplacedByTheNextCall)
{
    Error error;
    EXPECT_FALSE(error);
    EXPECT_STREQ(error.message(), "");
    EXPECT_FALSE(g_file_set_contents("/nowhere/at/all", "", 0, error.out()));
    EXPECT_TRUE(error);
    EXPECT_STRNE(error.message(), "");
    g_set_error_literal(error.out(), G_IO_ERROR, G_IO_ERROR_FAILED, "second");
    EXPECT_STREQ(error.message(), "second");
}

TEST(Connections, TheirDestructionDisconnectsTheHandlers)
{
    const Emitter emitter;
    int calls = 0;
    {
        Connections connections;
        connections.add(emitter.object.get(), "cancelled", count, &calls);
        emitter.emit();
        EXPECT_EQ(calls, 1);
    }
    emitter.emit();
    EXPECT_EQ(calls, 1);
}

TEST(Connections, TheyMayOutliveTheEmitter)
{
    Emitter emitter;
    int calls = 0;
    Connections connections;
    connections.add(emitter.object.get(), "cancelled", count, &calls);
    emitter.object.reset();
    connections.clear();
    EXPECT_EQ(calls, 0);
}

TEST(Connections, AHandlerMayDestroyThem)
{
    const Emitter emitter;
    int calls = 0;
    auto connections = std::make_unique<Connections>();
    connections->add(emitter.object.get(), "cancelled", destroy, &connections);
    connections->add(emitter.object.get(), "cancelled", count, &calls);
    emitter.emit();
    EXPECT_FALSE(connections);
    EXPECT_EQ(calls, 0);
}

TEST(SourceId, ItsDestructionRemovesTheSource)
{
    int calls = 0;
    const auto count_idle = [](void* data) -> gboolean {
        ++*static_cast<int*>(data);
        return G_SOURCE_CONTINUE;
    };
    {
        SourceId source;
        source.reset(g_idle_add(count_idle, &calls));
        EXPECT_TRUE(source);
        while (calls == 0)
            g_main_context_iteration(nullptr, TRUE);
        source.reset();
        EXPECT_FALSE(source);
        calls = 0;
        source.reset(g_idle_add(count_idle, &calls));
    }
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_EQ(calls, 0);
}

TEST(Liveness, AGuardedCallbackDoesNothingAfterItsObjectsDestruction)
{
    struct Counter {
        int calls = 0;
        Liveness<Counter> liveness{*this};
    };
    auto counter = std::make_unique<Counter>();
    int all = 0;
    const std::function<void(int)> call = counter->liveness.guard([&all](Counter& self, int step) {
        self.calls += step;
        all += step;
    });
    const auto pointer = counter->liveness.pointer();
    call(2);
    EXPECT_EQ(counter->calls, 2);
    EXPECT_EQ(pointer.get(), counter.get());
    counter.reset();
    EXPECT_EQ(pointer.get(), nullptr);
    call(2);
    EXPECT_EQ(all, 2);
}

TEST(Liveness, EndDisablesTheCallbacksBeforeTheDestruction)
{
    struct Object {
        Liveness<Object> liveness{*this};
    };
    Object object;
    int calls = 0;
    const std::function<void()> call = object.liveness.guard([&calls](Object&) { ++calls; });
    object.liveness.end();
    call();
    EXPECT_EQ(calls, 0);
}

TEST(AsyncResult, TheCallbackIsCalledOnceAndDestroyed)
{
    const auto held = std::make_shared<int>(0);
    const auto file = adopt(g_file_new_for_path("/nowhere/at/all"));
    g_file_query_info_async(file.get(), "*", G_FILE_QUERY_INFO_NONE, G_PRIORITY_DEFAULT, nullptr, async_done,
                            async_data([held](GObject* from, GAsyncResult* result) {
                                Error error;
                                const auto info = adopt(g_file_query_info_finish(G_FILE(from), result, error.out()));
                                EXPECT_FALSE(info);
                                EXPECT_TRUE(error);
                                ++*held;
                            }));
    while (*held == 0)
        g_main_context_iteration(nullptr, TRUE);
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace qoro::test
