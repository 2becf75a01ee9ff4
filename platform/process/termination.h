// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include <memory>

namespace platform {

/// Reports that the system or the user's terminal asks the program to end.
///
/// On X11 systems SIGTERM, SIGINT and SIGHUP; the same signal a second time ends the process at once. On Windows the
/// events of the console that the program was started from; where an event ends the process in any case the system is
/// kept waiting a few seconds. Main thread, one at a time; needs the application object.
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
