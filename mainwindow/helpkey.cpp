// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/helpkey.h"

#include "app/settings.h"
#include "app/webaddresses.h"
#include "mainwindow/notices/notices.h"
#include "platform/files/file_manager.h"
#include "widgets/desktopservices.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QSettings>

#include <utility>

namespace {

bool isHelpKey(const QEvent& event)
{
    if (event.type() != QEvent::KeyPress)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(event);
    return key.key() == Qt::Key_F1 && key.modifiers() == Qt::NoModifier;
}

} // namespace

HelpKey::HelpKey(QObject* parent, Notices& notices, const QSettings& settings, QStringList folders)
    : QObject(parent), m_notices(notices), m_settings(settings), m_folders(std::move(folders))
{
    // A shortcut would not be heard in dialogs, nor while a menu is open.
    QCoreApplication::instance()->installEventFilter(this);
}

void HelpKey::openManual()
{
    for (const QString& folder : m_folders) {
        const QString page = QDir(folder).absoluteFilePath(QStringLiteral("index.html"));
        if (!QFileInfo(page).isFile())
            continue;
        openFile(page, *this, [this, page] { reportNotOpened(page); });
        return;
    }
    reportMissing();
}

bool HelpKey::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (!isHelpKey(*event) || isHotkey())
        return false;
    if (!static_cast<const QKeyEvent*>(event)->isAutoRepeat())
        openManual();
    return true;
}

QStringList HelpKey::installedFolders()
{
    const QDir program(QCoreApplication::applicationDirPath());
    return {program.filePath(QStringLiteral("manual")),
            QDir::cleanPath(program.filePath(QStringLiteral("../../share/doc/kestrano/manual")))};
}

/// While a menu is open the press arrives here as well.
bool HelpKey::isHotkey() const
{
    const QString key = QStringLiteral("F1");
    return m_settings.value(settingskeys::kRecordingHotkey).toString() == key ||
           m_settings.value(settingskeys::kScreenshotHotkey).toString() == key;
}

void HelpKey::reportMissing()
{
    m_notices.post({tr("The manual of this version is missing."), tr("Guide"),
                    [] { openWebPage(QLatin1String(webaddresses::kGuidePage)); }});
}

void HelpKey::reportNotOpened(const QString& path)
{
    m_notices.post({tr("No program can open %1.").arg(QDir::toNativeSeparators(path)), tr("Show in Folder"),
                    [path] { platform::revealInFileManager(path); }});
}
