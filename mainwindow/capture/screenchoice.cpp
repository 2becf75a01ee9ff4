// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/screenchoice.h"

#include "app/sclogger.h"
#include "mainwindow/menustyle.h"
#include "mainwindow/tile.h"
#include "widgets/desktopscreens.h"

#include <QAction>
#include <QEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>

ScreenChoice::ScreenChoice(Tile& tile) : m_tile(tile)
{
    m_tile.installEventFilter(this);
    for (const QScreen* const screen : desktopscreens::all())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](const QScreen* screen) {
        watch(screen);
        onScreensChanged();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &ScreenChoice::onScreenRemoved);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &ScreenChoice::onScreensChanged);
    showChoice();
}

ScreenChoice::~ScreenChoice()
{
    delete m_menu;
}

void ScreenChoice::watch(const QScreen* screen)
{
    connect(screen, &QScreen::geometryChanged, this, &ScreenChoice::onScreensChanged);
}

const QScreen* ScreenChoice::current() const
{
    return m_chosen != nullptr ? m_chosen.data() : QGuiApplication::primaryScreen();
}

CaptureScreen ScreenChoice::screen() const
{
    return current() != nullptr ? captureScreen(*current()) : CaptureScreen{};
}

QString ScreenChoice::describe(const QScreen& screen, qsizetype number)
{
    const QSize size = captureScreen(screen).physicalSize();
    return tr("Screen %1: %2 x %3 (%4)")
        .arg(QString::number(number), QString::number(size.width()), QString::number(size.height()), screen.name());
}

void ScreenChoice::offer()
{
    const QList<QScreen*> screens = desktopscreens::all();
    if (screens.size() < 2)
        return;
    delete m_menu;
    m_menu = new QMenu;
    m_menu->setObjectName(QStringLiteral("screenMenu"));
    m_menu->setStyleSheet(menuStyleSheet());
    for (qsizetype index = 0; index < screens.size(); ++index)
        addEntry(*screens.at(index), index + 1);
    // Deferred: the chosen entry, which the menu owns, is carried out after the menu has hidden.
    connect(m_menu, &QMenu::aboutToHide, m_menu, &QObject::deleteLater);
    m_menu->popup(m_tile.mapToGlobal(QPoint(0, m_tile.height())));
}

void ScreenChoice::addEntry(const QScreen& screen, qsizetype number)
{
    // A single ampersand would mark a key.
    QAction* const entry = m_menu->addAction(describe(screen, number).replace(QLatin1Char('&'), QLatin1String("&&")));
    entry->setCheckable(true);
    entry->setChecked(&screen == current());
    if (entry->isChecked())
        m_menu->setActiveAction(entry);
    connect(entry, &QAction::triggered, this, [this, offered = QPointer<const QScreen>(&screen)] {
        if (offered != nullptr)
            choose(*offered);
    });
}

void ScreenChoice::choose(const QScreen& screen)
{
    m_chosen = &screen == QGuiApplication::primaryScreen() ? nullptr : &screen;
    SCLogger::info(QStringLiteral("Screen \"%1\" is chosen").arg(screen.name()));
    showChoice();
    emit chosen();
}

void ScreenChoice::onScreenRemoved(const QScreen* screen)
{
    if (screen == m_chosen) {
        m_chosen.clear();
        SCLogger::warning(
            QStringLiteral("The chosen screen \"%1\" is gone; the primary one is used").arg(screen->name()));
    }
    onScreensChanged();
}

void ScreenChoice::onScreensChanged()
{
    showChoice();
    emit screensChanged();
}

void ScreenChoice::showChoice()
{
    const QList<QScreen*> screens = desktopscreens::all();
    const qsizetype number = screens.indexOf(current()) + 1;
    const bool isOneOfSeveral = screens.size() > 1 && number > 0;
    const QString description = isOneOfSeveral ? describe(*current(), number) : QString();
    m_tile.setNote(isOneOfSeveral ? tr("Screen %1").arg(number) : QString());
    m_tile.setToolTip(description);
    m_tile.setAccessibleDescription(description);
}

bool ScreenChoice::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        showChoice();
    return false;
}
