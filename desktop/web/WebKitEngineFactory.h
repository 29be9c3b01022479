#pragma once

#include "desktop/web/PageWatch.h"
#include "kit/RefusalLog.h"
#include "platform/Platform.h"

#include <memory>
#include <string>

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitWebContext WebKitWebContext;

namespace qoro
{

class GuardFolder;
class PageReach;
class SocketFilter;

/// The address under which every page finds the kit's script library.
inline constexpr const char* script_library_address = "kit://script.js";

/// Web engines, of which those of one kind share one process family and one memory-only session.
class WebKitEngineFactory : public WebEngineFactory
{
public:
    explicit WebKitEngineFactory(Platform& platform, const PageLimits& limits = {});
    ~WebKitEngineFactory() override;
    WebKitEngineFactory(const WebKitEngineFactory&) = delete;
    WebKitEngineFactory& operator=(const WebKitEngineFactory&) = delete;

    /// GTK must have been started. Where pages can't be guarded, the engine shows none, and says at every load why.
    std::unique_ptr<WebEngine> make_web_engine(WebListener& listener, PageKind kind) override;

private:
    struct Family {
        WebKitWebContext* context = nullptr;
        WebKitNetworkSession* session = nullptr;
        std::shared_ptr<PageReach> reach = {};
    };
    /// @throws std::runtime_error when pages can't be guarded
    void found(Family& family, PageKind kind);
    std::shared_ptr<PageReach> guard_network(PageKind kind, WebKitNetworkSession* session);
    /// Any thread.
    void tell_refusal(const std::string& where);

    Platform& platform_;
    std::unique_ptr<GuardFolder> guard_;
    std::shared_ptr<SocketFilter> sockets_;
    const PageLimits limits_;
    const std::shared_ptr<PageWatch> watch_;
    Family creatives_;
    Family browsed_;
    RefusalLog refusals_;
    /// Gone with the factory.
    const std::shared_ptr<WebKitEngineFactory*> self_ = std::make_shared<WebKitEngineFactory*>(this);
};

} // namespace qoro
