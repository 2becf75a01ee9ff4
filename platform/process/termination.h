// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

namespace platform {

/// Reports that the system or the terminal asks the program to end: SIGTERM, SIGINT, SIGHUP and SIGQUIT, of which the
/// same one again ends it at once, or the events of a Windows console, where closing, log-off and shutdown wait a few
/// seconds. Main thread, one at a time; needs the application object.
class TerminationWatcher : public QObject
{
    Q_OBJECT

public:
    explicit TerminationWatcher(QObject* parent = nullptr);
    ~TerminationWatcher() override;

signals:
    void terminationRequested();

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};

} // namespace platform
