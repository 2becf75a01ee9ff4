// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QSize>

/// An X server beside the test's own. While the object lives, what the test starts, and asks of the X server, goes to
/// that one.
class OwnDisplay
{
public:
    explicit OwnDisplay(const QSize& size);
    ~OwnDisplay();
    OwnDisplay(const OwnDisplay&) = delete;
    OwnDisplay& operator=(const OwnDisplay&) = delete;

    bool isThere() const { return m_isThere; }
    /// The server ends as if it had crashed.
    void kill();

private:
    const QByteArray m_before;
    QProcess m_server;
    bool m_isThere = false;
};
