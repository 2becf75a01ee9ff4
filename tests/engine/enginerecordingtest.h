#pragma once

#include "engine/obswrapper.h"

#include <QList>
#include <QObject>
#include <QSignalSpy>

#include <memory>

/// What the tests of recording share: each test function has a wrapper of its own over the stand-ins.
class EngineRecordingTest : public QObject
{
    Q_OBJECT

protected:
    /// Prepares a recording of this format.
    void setup(int format);

    /// The numbers that a spy on recordStatusChanged() has seen.
    static QList<int> statuses(const QSignalSpy& spy);

    /// Signals that the output has stopped, the way a plug-in does.
    static void signalStop(obs_output_t* output, int code);

    std::unique_ptr<ObsWrapper> m_wrapper;
    std::unique_ptr<QSignalSpy> m_status;

private slots:
    void init();
    void cleanup();
};
