// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/audio/audioserver.h"

#include <QHash>
#include <QTimer>

#include <memory>
#include <pulse/pulseaudio.h>

/// PulseAudio, or what speaks its protocol, over a connection of the program's own: libobs' plug-in never notices that
/// the server has gone. A server that is not there is tried again every second.
class PulseServer : public AudioServer
{
public:
    PulseServer();
    ~PulseServer() override;
    Q_DISABLE_COPY_MOVE(PulseServer)

    bool isRunning() const override { return m_isRunning; }
    std::optional<AudioPart> heardBy(const QString& stream) const override;

private:
    struct Answer
    {
        /// By index.
        QHash<uint32_t, AudioPart> sources;
        /// Of this process, by name.
        QHash<QString, AudioPart> streams;

        bool operator==(const Answer&) const = default;
    };

    struct FreeLoop
    {
        void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
    };
    /// With the loop locked.
    struct Disconnect
    {
        void operator()(pa_context* context) const;
    };

    void connectToServer();
    void onStopped();
    void onAnswer(const Answer& answer);

    // With the loop locked, as in its callbacks.
    void listen();
    void ask();
    void publish();
    static void onState(pa_context* context, void* server);
    static void onEvent(pa_context* context, pa_subscription_event_type_t event, uint32_t index, void* server);
    static void onSource(pa_context* context, const pa_source_info* info, int end, void* server);
    static void onStream(pa_context* context, const pa_source_output_info* info, int end, void* server);

    bool m_isRunning = true;
    Answer m_answer;
    QTimer m_retryTimer;

    /// Has a thread of its own.
    const std::unique_ptr<pa_threaded_mainloop, FreeLoop> m_loop;
    // Guarded by the loop's lock.
    std::unique_ptr<pa_context, Disconnect> m_context;
    Answer m_gathered;
    bool m_isAsking = false;
    bool m_hasChanged = false; ///< Since it was asked.
};
