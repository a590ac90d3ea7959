// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/SoundServerInfo.h"

#include <pulse/context.h>
#include <pulse/introspect.h>
#include <pulse/mainloop.h>
#include <pulse/operation.h>

#include <chrono>
#include <memory>

using namespace std::chrono_literals;

namespace {

constexpr auto longestWait = 3s;

struct Answers
{
    SoundServerInfo server;
    QString defaultSink;
    bool known = false; ///< the server has described itself
};

void takeServer(pa_context *, const pa_server_info *info, void *answers)
{
    if (info == nullptr)
        return;
    auto *const to = static_cast<Answers *>(answers);
    to->server.name = QString::fromUtf8(info->server_name);
    if (!to->server.name.contains(u"PipeWire"))
        to->server.name += u' ' + QString::fromUtf8(info->server_version);
    to->defaultSink = QString::fromUtf8(info->default_sink_name);
    to->known = true;
}

void takeSink(pa_context *, const pa_sink_info *info, int, void *answers)
{
    auto *const to = static_cast<Answers *>(answers);
    if (info == nullptr || to->defaultSink != QString::fromUtf8(info->name))
        return;
    to->server.output = QString::fromUtf8(info->description);
    to->server.monitor = QString::fromUtf8(info->monitor_source_name);
}

void takeSource(pa_context *, const pa_source_info *info, int, void *answers)
{
    if (info == nullptr)
        return;
    static_cast<Answers *>(answers)->server.sources.append(
        {QString::fromUtf8(info->name), QString::fromUtf8(info->description),
         info->monitor_of_sink != PA_INVALID_INDEX});
}

/// A connection to the server, which works only while it is waited for.
class Connection
{
public:
    Connection()
        : m_context(pa_context_new(pa_mainloop_get_api(m_loop.get()), "Ostrine"))
    {
        pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    }

    pa_context *context() const { return m_context.get(); }

    bool isReady() const
    {
        return waitUntil([this] { return pa_context_get_state(context()) == PA_CONTEXT_READY; });
    }

    /// Waits for the end of @p operation, and forgets it.
    bool isDone(pa_operation *operation) const
    {
        if (operation == nullptr)
            return false;
        const bool done =
            waitUntil([=] { return pa_operation_get_state(operation) == PA_OPERATION_DONE; });
        if (!done)
            pa_operation_cancel(operation);
        pa_operation_unref(operation);
        return done;
    }

private:
    struct Release
    {
        void operator()(pa_mainloop *loop) const { pa_mainloop_free(loop); }
        void operator()(pa_context *context) const
        {
            pa_context_disconnect(context);
            pa_context_unref(context);
        }
    };

    template<typename Condition>
    bool waitUntil(Condition condition) const
    {
        while (!condition()) {
            const auto left = m_end - std::chrono::steady_clock::now();
            const bool isAlive = PA_CONTEXT_IS_GOOD(pa_context_get_state(context()));
            if (!isAlive || left <= 0s)
                return false;
            const auto us = std::chrono::duration_cast<std::chrono::microseconds>(left);
            pa_mainloop_prepare(m_loop.get(), static_cast<int>(us.count()));
            pa_mainloop_poll(m_loop.get());
            pa_mainloop_dispatch(m_loop.get());
        }
        return true;
    }

    const std::chrono::steady_clock::time_point m_end =
        std::chrono::steady_clock::now() + longestWait;
    std::unique_ptr<pa_mainloop, Release> m_loop{pa_mainloop_new()};
    std::unique_ptr<pa_context, Release> m_context; // uses m_loop
};

} // namespace

std::optional<SoundServerInfo> askSoundServer()
{
    Answers answers;
    const Connection connection;
    if (!connection.isReady())
        return std::nullopt;
    pa_context *const context = connection.context();
    if (!connection.isDone(pa_context_get_server_info(context, takeServer, &answers)) ||
        !connection.isDone(pa_context_get_sink_info_list(context, takeSink, &answers)) ||
        !connection.isDone(pa_context_get_source_info_list(context, takeSource, &answers)) ||
        !answers.known)
        return std::nullopt;
    return answers.server;
}
