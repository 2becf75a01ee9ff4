// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/screenshottest.h"

#include "app/settings.h"
#include "mainwindow/screenshotsession.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"

#include <QApplication>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdlib>

using desktopuser::click;
using desktopuser::drag;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::scale;
using userinput::xdotool;

namespace {

constexpr QRect kRegion(880, 200, 300, 240);

} // namespace

void ScreenshotTest::initTestCase()
{
    m_desktop = gridImage(StillImage::displaySize());
    m_stillImage = std::make_unique<StillImage>(m_desktop);
    QVERIFY(m_stillImage->isShown());
}

void ScreenshotTest::init()
{
    const auto settings = openSettings();
    settings->clear();
    settings->setValue(settingskeys::kFirstRun, false);
    settings->setValue(settingskeys::kScreenshotHotkey, QStringLiteral("F10"));
    pointTo(onScreen({3, 3}));
    m_boxes = std::make_unique<messagebox::Recorder>();
    m_window = std::make_unique<SCMainWindow>(Durations{.windowGoneMs = 150});
    m_window->move(onScreen({20, 40}));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    desktopuser::waitUntilStill();
    click(*m_window->findChild<QPushButton*>(QStringLiteral("screenshotTab")));
    m_produced = std::make_unique<QSignalSpy>(m_window.get(), &SCMainWindow::fileProduced);
}

void ScreenshotTest::cleanup()
{
    xdotool({"mouseup", "1"});
    m_window.reset();
    m_boxes.reset();
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
}

QWidget& ScreenshotTest::bar()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* const window : windows) {
        if (window->isVisible() && window->objectName() == QLatin1String("buttonBackground"))
            return *window;
    }
    qFatal("There is no bar on the screen");
}

QPushButton& ScreenshotTest::barButton(const char* name)
{
    auto* const button = bar().findChild<QPushButton*>(QLatin1String(name));
    if (button == nullptr)
        qFatal("There is no such button on the screen");
    return *button;
}

QRect ScreenshotTest::region()
{
    return {onScreen(kRegion.topLeft()), kRegion.size()};
}

QRect ScreenshotTest::pixels(const QRect& area)
{
    const QPoint origin = QGuiApplication::primaryScreen()->geometry().topLeft();
    const QRect inside = area.translated(-origin);
    return QRect((QPointF(inside.topLeft()) * scale()).toPoint(), (QSizeF(inside.size()) * scale()).toSize())
        .translated(origin);
}

int ScreenshotTest::largestDifference(const QImage& one, const QImage& other)
{
    int largest = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            largest = std::max(largest, std::abs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y))));
    }
    return largest;
}

void ScreenshotTest::clickTile(const char* name) const
{
    click(*m_window->findChild<Tile*>(QLatin1String(name)));
}

void ScreenshotTest::dragRegion() const
{
    clickTile("screenshotRegionTile");
    QTRY_VERIFY(shownWindow<AreaSelector>() != nullptr && shownWindow<AreaSelector>()->isActiveWindow());
    desktopuser::waitUntilStill();
    drag(region().topLeft(), region().bottomRight());
    QTRY_VERIFY(frame() != nullptr && shownWindow<AreaSelector>() == nullptr);
    waitForTheKeyboard();
}

void ScreenshotTest::waitForTheKeyboard() const
{
    // The session asks for the keyboard once the window that made room is gone.
    const auto timers =
        m_window->findChild<ScreenshotSession*>()->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    QTRY_VERIFY(std::ranges::none_of(timers, &QTimer::isActive));
    desktopuser::waitUntilStill();
    QTRY_VERIFY(frame()->isActiveWindow());
}

void ScreenshotTest::expectShot(const QRect& covered) const
{
    QTRY_COMPARE(m_produced->size(), 1);
    QCOMPARE(m_produced->at(0).at(1).toString(), QStringLiteral("screenshot"));
    const QImage shot(m_produced->at(0).at(0).toString());
    QCOMPARE(shot.size(), covered.size());
    QCOMPARE(largestDifference(shot, m_desktop.copy(covered)), 0);
    QVERIFY(frame() == nullptr);
}
