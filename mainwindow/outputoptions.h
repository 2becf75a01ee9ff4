// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/settingstables.h"

#include <QObject>

class Activity;
class Notices;
class QComboBox;
class QLineEdit;
class QPushButton;
class QSettings;

namespace Ui {
class SCMainWindow;
}

/// Format and folder of recordings or of screenshots: controls and their settings. User-interface thread.
class OutputOptions : public QObject
{
    Q_OBJECT

public:
    struct Parts
    {
        QComboBox& formatBox;
        QLineEdit& folderEdit;
        QPushButton& folderButton;
        QLatin1String formatKey;
        QLatin1String folderKey;
        const settingstables::PositionToText& formats;
        const char* folderTitle = nullptr;
    };
    static Parts recordings(Ui::SCMainWindow& ui);
    static Parts screenshots(Ui::SCMainWindow& ui);

    OutputOptions(const Parts& parts, QSettings& settings, const Activity& activity);

    /// An unknown format is shown as the first one and stays stored.
    void showStored();
    void showStoredFolder();

    /// Position in the table of formats.
    int format() const;

    void showFormat(int position);
    /// Also stores it.
    void setFormat(int position);

    QString folder() const;

    /// Ignored unless idle.
    /// @return empty where none was chosen
    QString chooseFolder();
    /// Posts that the default folder is used in place of folder().
    void reportFallback(Notices& notices);

signals:
    /// Chosen by the user and stored.
    void formatChosen();

private:
    void storeFormat(int position);

    Parts m_parts;
    QSettings& m_settings;
    const Activity& m_activity;
};
