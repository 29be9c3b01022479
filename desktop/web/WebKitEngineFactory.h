#pragma once

#include "desktop/web/PageWatch.h"
#include "platform/Platform.h"

#include <memory>

typedef struct _WebKitNetworkSession WebKitNetworkSession;
typedef struct _WebKitWebContext WebKitWebContext;

namespace qoro
{

class GuardFolder;
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
    };
    /// @throws std::runtime_error when pages can't be guarded
    void found(Family& family, PageKind kind);

    Platform& platform_;
    std::unique_ptr<GuardFolder> guard_;
    std::shared_ptr<SocketFilter> sockets_;
    const PageLimits limits_;
    const std::shared_ptr<PageWatch> watch_;
    Family creatives_;
    Family browsed_;
};

} // namespace qoro
