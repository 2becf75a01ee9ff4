// The windows that the main window opens over itself: settings, update, about.

#include "dialogs/dialogwindow.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scupgradewindow.h"
#include "mainwindow/mainmenu.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/updatenotice.h"
#include "overlays/areaselector.h"
#include "overlays/windowhighlighter.h"

#include <QApplication>
#include <QJsonObject>

#include <algorithm>

namespace {

/// Whether something is being chosen on the desktop.
bool isPicking()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    return std::any_of(windows.cbegin(), windows.cend(), [](const QWidget* window) {
        return window->isVisible() && (qobject_cast<const AreaSelector*>(window) != nullptr ||
                                       qobject_cast<const WindowHighlighter*>(window) != nullptr);
    });
}

} // namespace

void SCMainWindow::armUpdateCheck()
{
    m_updateNotice = new UpdateNotice(this, [this](bool excluded) { return mayBeInterrupted(excluded); });
}

void SCMainWindow::connectDialogs()
{
    connect(m_menu, &MainMenu::updateCheckRequested, this, &SCMainWindow::onUpdateCheckRequested);
    connect(m_menu, &MainMenu::aboutRequested, this, &SCMainWindow::onAboutRequested);
}

/// Whether a window that the user has not asked for may open. What is being chosen, and a dialog or menu that is open,
/// would be cut off from the user; a recording would show the window, unless the system keeps it out of the picture.
bool SCMainWindow::mayBeInterrupted(bool excludedFromCapture) const
{
    if (QApplication::activeModalWidget() != nullptr || QApplication::activePopupWidget() != nullptr || isPicking())
        return false;
    return excludedFromCapture || (m_session.state() == RecordingState::Idle && isVisible() && !isMinimized());
}

void SCMainWindow::onUpdateCheckRequested()
{
    m_updateNotice->drop();
    dialogwindow::showOver(*new SCUpgradeWindow(this, QJsonObject()), *this);
}

void SCMainWindow::onAboutRequested()
{
    dialogwindow::showOver(*new SCAboutWindow(this), *this);
}
