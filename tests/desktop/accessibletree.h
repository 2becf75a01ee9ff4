// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <vector>

/// Something that a program shows, as it describes it to a screen reader over AT-SPI.
struct AccessibleObject
{
    /// Positions in AT-SPI's sets of states.
    enum State
    {
        Checked = 4,
        Enabled = 8,
        Focusable = 11,
        Focused = 12,
        Showing = 25
    };

    QString name;
    /// As "push button".
    QString role;
    uint64_t states = 0;
    /// Those that are shown.
    std::vector<AccessibleObject> children;

    bool is(State state) const { return (states >> state & 1U) != 0; }
};

/// Calls for each object below an object, before those below that one.
void visitAccessible(const AccessibleObject& object, const std::function<void(const AccessibleObject&)>& visit);

/// A screen reader on the session's accessibility bus, which at-spi2-core starts where it is asked for. Programs that
/// are to be read need QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 in their environment. User-interface thread.
class ScreenReader
{
public:
    ScreenReader();
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    bool isConnected() const { return m_bus.isConnected(); }

    /// All that the programs on this bus show. Those of this process may be among them: events are run meanwhile.
    AccessibleObject read() const;

private:
    static QDBusConnection connectToBus();

    QDBusConnection m_bus;
};
