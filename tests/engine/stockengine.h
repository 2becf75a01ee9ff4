// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/obswrapper.h"

#include <QProcess>
#include <QRect>

#include <cstdint>
#include <memory>
#include <optional>

/// What the tests with the stock plug-ins share: an engine that records the primary screen of a real X11 desktop, and
/// performers on it.
class StockEngine
{
public:
    static constexpr int kFps = 30;
    static constexpr int kBitRate = 4;
    /// Numbers a second that the test image shows: one for every recorded frame, so each lost one is
    /// missed.
    static constexpr int kPatternRate = kFps;

    ~StockEngine();

    /// Shows the test image on the whole desktop, or plays the test tone. Empty on success, else what went wrong.
    QString showPattern();
    QString playTone();

    /// Starts the engine, builds the scene and points it at the whole primary screen, its audio on. Empty on success,
    /// else what went wrong.
    QString start(const EngineTimings& timings = EngineTimings(),
                  const CapturePlatform& platform = CapturePlatform::current());
    /// What is cut off the frame from now on; the frame has the size of what is left.
    bool setMargins(int left, int right, int top, int bottom);
    /// What is cut off while a recording runs: the size of what is left stays.
    bool setTarget(int left, int right, int top, int bottom);
    /// Releases the engine.
    void release() { m_engine.reset(); }

    ObsWrapper& engine() const { return *m_engine; }
    /// The primary screen on the desktop, in physical pixels.
    QRect screen() const { return m_screen; }
    /// The size of what is recorded.
    QSize size() const { return m_size; }

    /// Starts a recording and waits until its first frame was taken. Empty on success, else what went wrong.
    QString begin(const QString& storePath, int format);
    /// Brings the recording to its end and closes the file. Empty on success, else what went wrong.
    QString end();

    /// The number that the desktop shows at this moment.
    static std::optional<uint32_t> numberOnScreen();

private:
    static QString perform(QProcess& process, const char* name, const QStringList& arguments);

    QProcess m_patternProcess;
    QProcess m_tone;
    QRect m_screen;
    QSize m_size;
    std::unique_ptr<ObsWrapper> m_engine;
};
