// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QStringList>

class Notices;
class QSettings;

/// F1 opens the manual of this version, whichever of the program's windows, dialogs or menus has the keyboard. A hotkey
/// on F1 has precedence. No network is needed; without a manual, or a program for it, there is a notice. User-interface
/// thread.
class HelpKey : public QObject
{
    Q_OBJECT

public:
    /// Notices and settings must outlive this object.
    /// @param folders where "index.html" may be; the first one that has it counts
    HelpKey(QObject* parent, Notices& notices, const QSettings& settings, QStringList folders = installedFolders());

    void openManual();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Beside the executable, as in a build and on Windows; in the documentation of the system.
    static QStringList installedFolders();
    bool isHotkey() const;
    void reportMissing();
    void reportNotOpened(const QString& path);

    Notices& m_notices;
    const QSettings& m_settings;
    const QStringList m_folders;
};
