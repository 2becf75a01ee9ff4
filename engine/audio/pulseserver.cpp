// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/audio/pulseserver.h"

#include <QCoreApplication>

#include <utility>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds kRetryInterval{1'000};

class LoopLock
{
public:
    explicit LoopLock(pa_threaded_mainloop* loop) : m_loop(loop) { pa_threaded_mainloop_lock(m_loop); }
    ~LoopLock() { pa_threaded_mainloop_unlock(m_loop); }
    Q_DISABLE_COPY_MOVE(LoopLock)

private:
    pa_threaded_mainloop* m_loop;
};

/// The operation goes on: its callback is all that is waited for.
void release(pa_operation* operation)
{
    if (operation)
        pa_operation_unref(operation);
}

bool isOwn(const pa_source_output_info& stream)
{
    const char* const process = pa_proplist_gets(stream.proplist, PA_PROP_APPLICATION_PROCESS_ID);
    return process && QByteArray(process) == QByteArray::number(QCoreApplication::applicationPid());
}

/// A source is changed by each step of its volume.
bool isOfInterest(pa_subscription_event_type_t event)
{
    return (event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK) != PA_SUBSCRIPTION_EVENT_SOURCE ||
           (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) != PA_SUBSCRIPTION_EVENT_CHANGE;
}

} // namespace

void PulseServer::Disconnect::operator()(pa_context* context) const
{
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    pa_context_disconnect(context);
    pa_context_unref(context);
}

PulseServer::PulseServer() : m_loop(pa_threaded_mainloop_new())
{
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(kRetryInterval);
    connect(&m_retryTimer, &QTimer::timeout, this, &PulseServer::connectToServer);
    pa_threaded_mainloop_start(m_loop.get());
    connectToServer();
}

PulseServer::~PulseServer()
{
    const LoopLock lock(m_loop.get());
    m_context.reset();
}

std::optional<AudioPart> PulseServer::heardBy(const QString& stream) const
{
    const auto found = m_answer.streams.constFind(stream);
    return found == m_answer.streams.constEnd() ? std::nullopt : std::optional(*found);
}

void PulseServer::connectToServer()
{
    const QByteArray name = QCoreApplication::applicationName().toUtf8();
    const LoopLock lock(m_loop.get());
    m_context.reset(pa_context_new(pa_threaded_mainloop_get_api(m_loop.get()), name.constData()));
    pa_context_set_state_callback(m_context.get(), &PulseServer::onState, this);
    pa_context_set_subscribe_callback(m_context.get(), &PulseServer::onEvent, this);
    // A failure is a state, too.
    pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    // Known at once where there is no socket.
    m_isRunning = m_isRunning && PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context.get()));
}

void PulseServer::onStopped()
{
    m_retryTimer.start();
    m_isRunning = false;
    m_answer = Answer();
    emit changed();
}

void PulseServer::onAnswer(const Answer& answer)
{
    const bool wasRunning = std::exchange(m_isRunning, true);
    if (wasRunning && answer == m_answer)
        return;
    m_answer = answer;
    emit changed();
}

void PulseServer::onState(pa_context* context, void* server)
{
    auto* const self = static_cast<PulseServer*>(server);
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY)
        self->listen();
    else if (!PA_CONTEXT_IS_GOOD(state))
        QMetaObject::invokeMethod(self, &PulseServer::onStopped, Qt::QueuedConnection);
}

void PulseServer::listen()
{
    constexpr auto kEvents =
        static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT);
    release(pa_context_subscribe(m_context.get(), kEvents, nullptr, nullptr));
    m_isAsking = false;
    ask();
}

void PulseServer::onEvent(pa_context*, pa_subscription_event_type_t event, uint32_t, void* server)
{
    if (isOfInterest(event))
        static_cast<PulseServer*>(server)->ask();
}

/// The server answers in the order in which it is asked.
void PulseServer::ask()
{
    m_hasChanged = m_isAsking;
    if (m_isAsking)
        return;
    m_isAsking = true;
    m_gathered = Answer();
    release(pa_context_get_source_info_list(m_context.get(), &PulseServer::onSource, this));
    release(pa_context_get_source_output_info_list(m_context.get(), &PulseServer::onStream, this));
}

void PulseServer::onSource(pa_context*, const pa_source_info* info, int, void* server)
{
    if (!info)
        return;
    const bool isMonitor = info->monitor_of_sink != PA_INVALID_INDEX;
    static_cast<PulseServer*>(server)->m_gathered.sources.insert(info->index, isMonitor ? AudioPart::Desktop
                                                                                        : AudioPart::Microphone);
}

void PulseServer::onStream(pa_context*, const pa_source_output_info* info, int, void* server)
{
    auto* const self = static_cast<PulseServer*>(server);
    if (!info) {
        self->publish();
        return;
    }
    const auto source = self->m_gathered.sources.constFind(info->source);
    if (isOwn(*info) && source != self->m_gathered.sources.constEnd())
        self->m_gathered.streams.insert(QString::fromUtf8(info->name), *source);
}

void PulseServer::publish()
{
    m_isAsking = false;
    QMetaObject::invokeMethod(
        this, [this, answer = m_gathered] { onAnswer(answer); }, Qt::QueuedConnection);
    if (m_hasChanged)
        ask();
}
