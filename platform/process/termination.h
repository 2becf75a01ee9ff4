// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

namespace platform {

/// Reports that the system or the terminal asks the program to end: SIGTERM, SIGINT and SIGHUP, which end it at once
/// when they come again, or the events of a Windows console, which wait a few seconds. Main thread, one at a time;
/// needs the application object.
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
