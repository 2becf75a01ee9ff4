// The windows that the main window opens over itself: settings, update, about.

#include "app/sclogger.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/hotkeys.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/updatenotice.h"
#include "ui_scmainwindow.h"
#include "widgets/messagebox.h"

#include <QJsonObject>

#include <stdexcept>

void SCMainWindow::armUpdateCheck()
{
    m_updateNotice = new UpdateNotice(this, m_activity, m_durations);
}

void SCMainWindow::connectDialogs()
{
    connect(m_menu, &MainMenu::settingsRequested, this, &SCMainWindow::openSettingsWindow);
    connect(m_ui->settingsBtn, &QPushButton::clicked, this, &SCMainWindow::openSettingsWindow);
    // A format or folder that changed under a recording would belong to no file.
    connect(&m_session, &RecordingSession::stateChanged, this,
            [this](RecordingState state) { m_ui->settingsBtn->setEnabled(state == RecordingState::Idle); });
    connect(m_menu, &MainMenu::updateCheckRequested, this, &SCMainWindow::onUpdateCheckRequested);
    connect(m_menu, &MainMenu::aboutRequested, this, &SCMainWindow::onAboutRequested);
}

void SCMainWindow::openSettingsWindow()
{
    try {
        auto* const window = new SCSettingsWindow(this);
        connect(window, &SCSettingsWindow::updateSettings, this, &SCMainWindow::onSettingsUpdated);
        connect(window, &SCSettingsWindow::saveLocationChanged, this, &SCMainWindow::showStoredFolders);
        dialogwindow::showOver(*window, *this);
    } catch (const std::out_of_range& error) {
        SCLogger::error(QStringLiteral("The settings window cannot be opened: %1").arg(QLatin1String(error.what())));
        tellOfUnknownFormat();
    }
}

/// The value stays: it may be a newer version's, and the user's to change.
void SCMainWindow::tellOfUnknownFormat()
{
    const QString recording = m_settings->value(settingskeys::kRecordingFormat).toString();
    const QString screenshot = m_settings->value(settingskeys::kScreenshotFormat).toString();
    const bool isRecordings = !settingstables::recordingFormatPositions().contains(recording);
    const QString format = isRecordings ? recording : screenshot;
    SCLogger::error(QStringLiteral("The stored format \"%1\" is none of the program's").arg(format));
    messagebox::warning(
        this, tr("Warning"),
        tr("The stored format %1 is unknown. Choose a format in the main window, then open the settings again.")
            .arg(format));
}

/// What was saved is in force at once.
void SCMainWindow::onSettingsUpdated()
{
    applyStoredSettings();
    recordScreenForPicture();
    const QList<Hotkeys::Failure> failures = m_hotkeys->apply(*m_settings);
    for (const Hotkeys::Failure& failure : failures)
        messagebox::warning(this, tr("Warning"),
                            tr("The hotkey %1 cannot be used. Another program may hold it.").arg(failure.key));
}

void SCMainWindow::showStoredFolders()
{
    showFolder(*m_ui->saveLocationEdit, m_settings->value(settingskeys::kRecordingSaveLocation).toString());
    showFolder(*m_ui->screenshotLocationEdit, m_settings->value(settingskeys::kScreenshotSaveLocation).toString());
}

void SCMainWindow::onUpdateCheckRequested()
{
    auto* const window = new SCUpgradeWindow(this, QJsonObject());
    connect(window, &SCUpgradeWindow::answered, m_updateNotice, &UpdateNotice::drop);
    dialogwindow::showOver(*window, *this);
}

void SCMainWindow::onAboutRequested()
{
    dialogwindow::showOver(*new SCAboutWindow(this), *this);
}
