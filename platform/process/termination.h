#pragma once

#include <QObject>

#include <memory>

namespace platform {

/// Tells when the system or the user's terminal asks the program to end, so that it can do so in an orderly way.
///
/// On X11 systems the signals SIGTERM, SIGINT and SIGHUP; the same signal a second time ends the process at once. On
/// Windows the events of the console that the program was started from; on those that end the process in any case the
/// system is kept waiting a few seconds. Needs the application object and belongs to the main thread, as does the
/// signal. One at a time.
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
