#include "desktop/net/PageProxy.h"

#include "desktop/net/PageTunnel.h"

#include <gio/gio.h>

#include <array>
#include <atomic>
#include <chrono>
#include <future>
#include <list>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace qoro
{

namespace
{

/// Each tunnel uses three descriptors of the 1,024 that a process usually has; GLib terminates the program when it runs
/// out of them.
constexpr std::size_t MostTunnels = 64;
constexpr auto SettingsPatience = std::chrono::seconds(1);
/// Delay after a failed accept().
constexpr auto Pause = std::chrono::milliseconds(20);

/// 128 random bits.
std::string new_password()
{
    std::array<unsigned char, 16> bytes{};
    if (getentropy(bytes.data(), bytes.size()) != 0)
        throw std::runtime_error("this machine has no random numbers");
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : bytes) {
        text += Digits[byte >> 4U];
        text += Digits[byte & 0xFU];
    }
    return text;
}

} // namespace

class PageProxy::Worker
{
public:
    explicit Worker(std::function<void(const std::string&)> on_refusal)
        : listener_(adopt(g_socket_listener_new())), stop_(adopt(g_cancellable_new()))
    {
        rules_.user = "page";
        rules_.password = new_password();
        rules_.on_refusal = std::move(on_refusal);
        const auto here = adopt(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
        const auto any_port = adopt(g_inet_socket_address_new(here.get(), 0));
        GSocketAddress* bound = nullptr;
        if (g_socket_listener_add_address(listener_.get(), any_port.get(), G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP,
                                          nullptr, &bound, nullptr)) {
            const auto owned = adopt(bound);
            port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(bound));
            accepting_ = std::thread([this] { accept(); });
        }
    }

    ~Worker()
    {
        g_cancellable_cancel(stop_.get());
        if (accepting_.joinable())
            accepting_.join();
        for (Served& served : served_)
            served.tunnel.stop();
        for (Served& served : served_)
            served.thread.join();
    }

    std::string address() const
    {
        return port_ == 0 ? ""
                          : "socks5://" + rules_.user + ":" + rules_.password + "@127.0.0.1:" + std::to_string(port_);
    }

    void set_reach(NetworkZone reach)
    {
        rules_.reach = reach;
        const std::scoped_lock lock(mutex_);
        for (Served& served : served_)
            served.tunnel.keep_within(reach);
    }

private:
    struct Served {
        Served(PageTunnel::Rules& rules, ObjectRef<GSocketConnection> page) : tunnel(rules, std::move(page)) {}
        PageTunnel tunnel;
        std::atomic<bool> over = false;
        std::thread thread;
    };

    void accept()
    {
        while (!g_cancellable_is_cancelled(stop_.get())) {
            auto page = adopt(g_socket_listener_accept(listener_.get(), nullptr, stop_.get(), nullptr));
            if (!page) {
                std::this_thread::sleep_for(Pause); // for example, the page has already closed the connection
                continue;
            }
            const std::scoped_lock lock(mutex_);
            std::erase_if(served_, [](Served& served) {
                const bool over = served.over;
                if (over)
                    served.thread.join();
                return over;
            });
            if (served_.size() == MostTunnels)
                continue;
            Served& served = served_.emplace_back(rules_, std::move(page));
            try {
                served.thread = std::thread([&served] {
                    served.tunnel.run();
                    served.over = true;
                });
            } catch (const std::system_error&) {
                served_.pop_back(); // out of threads
            }
        }
    }

    PageTunnel::Rules rules_;
    const ObjectRef<GSocketListener> listener_;
    const ObjectRef<GCancellable> stop_;
    int port_ = 0;
    std::mutex mutex_;
    std::list<Served> served_; // guarded by mutex_
    std::thread accepting_;
};

PageProxy::PageProxy(std::function<void(const std::string& where)> on_refusal)
    : worker_(std::make_unique<Worker>(std::move(on_refusal)))
{
}

PageProxy::~PageProxy() = default;

std::string PageProxy::address() const
{
    return worker_->address();
}

void PageProxy::set_reach(NetworkZone reach)
{
    worker_->set_reach(reach);
}

bool PageProxy::system_has_proxy()
{
    const auto found = std::make_shared<std::promise<bool>>();
    std::future<bool> answer = found->get_future();
    // On a detached thread: the settings may name a script that has to be fetched first.
    std::thread([found] {
        bool has = false;
        for (const char* address : {"http://example.org/", "https://example.org/"}) {
            const Owned<char*, g_strfreev> proxies(
                g_proxy_resolver_lookup(g_proxy_resolver_get_default(), address, nullptr, nullptr));
            has = has || (proxies && g_strcmp0(*proxies, "direct://") != 0);
        }
        found->set_value(has);
    }).detach();
    return answer.wait_for(SettingsPatience) != std::future_status::ready || answer.get();
}

} // namespace qoro
