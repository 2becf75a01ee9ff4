// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/outputoptions.h"

#include "app/sclogger.h"
#include "app/settings.h"
#include "mainwindow/activity.h"
#include "mainwindow/notices/notices.h"
#include "ui_scmainwindow.h"
#include "widgets/combobox.h"
#include "widgets/shownname.h"

#include <QFileDialog>
#include <QSettings>

OutputOptions::Parts OutputOptions::recordings(Ui::SCMainWindow& ui)
{
    return {*ui.formatBox,
            *ui.saveLocationEdit,
            *ui.changeLocationButton,
            settingskeys::kRecordingFormat,
            settingskeys::kRecordingSaveLocation,
            settingstables::kRecordingFormats,
            QT_TR_NOOP("Choose Save Location")};
}

OutputOptions::Parts OutputOptions::screenshots(Ui::SCMainWindow& ui)
{
    return {*ui.screenshotFormatBox,
            *ui.screenshotLocationEdit,
            *ui.changeScreenshotLocationButton,
            settingskeys::kScreenshotFormat,
            settingskeys::kScreenshotSaveLocation,
            settingstables::kScreenshotFormats,
            QT_TR_NOOP("Choose Screenshot Save Location")};
}

OutputOptions::OutputOptions(const Parts& parts, QSettings& settings, const Activity& activity)
    : m_parts(parts), m_settings(settings), m_activity(activity)
{
    for (const auto& [position, name] : m_parts.formats)
        m_parts.formatBox.insertItem(position, name);
    prepareComboBox(m_parts.formatBox);
    // Only the user's choice is stored: a value that is not in the table stays as it is.
    connect(&m_parts.formatBox, &QComboBox::activated, this, [this](int position) {
        storeFormat(position);
        emit formatChosen();
    });
    connect(&m_parts.folderButton, &QPushButton::clicked, this, &OutputOptions::chooseFolder);
}

void OutputOptions::showStored()
{
    const QString stored = m_settings.value(m_parts.formatKey).toString();
    const int position = m_parts.formatBox.findText(stored);
    if (position < 0)
        SCLogger::warning(
            QStringLiteral("The stored format \"%1\" is none of the program's; the first one is used").arg(stored));
    showFormat(qMax(position, 0));
    showStoredFolder();
}

void OutputOptions::showStoredFolder()
{
    const QString folder = m_settings.value(m_parts.folderKey).toString();
    m_parts.folderEdit.setText(folder);
    m_parts.folderEdit.setToolTip(shownName(folder));
}

int OutputOptions::format() const
{
    return m_parts.formatBox.currentIndex();
}

void OutputOptions::showFormat(int position)
{
    m_parts.formatBox.setCurrentIndex(position);
}

void OutputOptions::setFormat(int position)
{
    showFormat(position);
    storeFormat(position);
}

QString OutputOptions::folder() const
{
    return m_parts.folderEdit.text();
}

void OutputOptions::storeFormat(int position)
{
    m_settings.setValue(m_parts.formatKey, m_parts.formats.at(position));
}

QString OutputOptions::chooseFolder()
{
    // A dialog opened over a countdown would hold it up, and start the recording whenever the dialog is closed.
    if (!m_activity.isIdle())
        return {};
    QString folder =
        QFileDialog::getExistingDirectory(m_parts.folderEdit.window(), tr(m_parts.folderTitle), this->folder());
    if (folder.isEmpty())
        return {};
    m_settings.setValue(m_parts.folderKey, folder);
    showStoredFolder();
    return folder;
}

void OutputOptions::reportFallback(Notices& notices)
{
    notices.post({tr("The save folder cannot be used: files go to the default folder."), tr("Choose Another Folder"),
                  [this] { chooseFolder(); }});
}
