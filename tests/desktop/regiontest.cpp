// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/regiontest.h"

#include "app/settings.h"
#include "mainwindow/tile.h"
#include "overlays/areaselector.h"
#include "tests/desktop/userinput.h"
#include "tests/support/countdowntest.h"
#include "tests/support/messagecapture.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>

#include <cstdlib>

using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::drag;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;
using desktopuser::scale;
using desktopuser::waitUntilStill;
using userinput::xdotool;

namespace {

constexpr QPoint kWindowPosition(20, 40);

} // namespace

void RegionTest::initTestCase()
{
    QCOMPARE(QGuiApplication::screens().size(), qEnvironmentVariableIsSet("KESTRANO_TEST_TWO_SCREENS") ? 2 : 1);
    m_backdrop.setStyleSheet(QStringLiteral("background-color: rgb(10, 200, 30)"));
    m_backdrop.setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
    m_backdrop.setGeometry(QGuiApplication::primaryScreen()->virtualGeometry());
    m_backdrop.show();
    QVERIFY(QTest::qWaitForWindowExposed(&m_backdrop));
}

void RegionTest::init()
{
    const auto settings = openSettings();
    settings->clear();
    settings->setValue(settingskeys::kFirstRun, false);
    settings->setValue(settingskeys::kRecordingHotkey, QStringLiteral("F9"));
    pointTo(onScreen({3, 3}));
    // Countdowns are cancelled before they end, however busy the machine is.
    m_window = std::make_unique<SCMainWindow>(Durations{.countdownStepMs = 20'000});
    m_window->move(onScreen(kWindowPosition));
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    waitUntilStill();
    m_hasLooked = false;
}

void RegionTest::cleanup()
{
    xdotool({"mouseup", "1"});
    m_window.reset();
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
}

QRect RegionTest::region()
{
    return {onScreen(kRegion.topLeft()), kRegion.size()};
}

QRect RegionTest::framed(const QRect& area)
{
    return area.adjusted(-kBorderPx, -kBorderPx, kBorderPx, kBorderPx);
}

bool RegionTest::isLike(QRgb seen, QRgb expected)
{
    constexpr int kTolerance = 2;
    return std::abs(qRed(seen) - qRed(expected)) <= kTolerance &&
           std::abs(qGreen(seen) - qGreen(expected)) <= kTolerance &&
           std::abs(qBlue(seen) - qBlue(expected)) <= kTolerance;
}

QString RegionTest::wrongInTheBorder(const QRect& area)
{
    const QRect frame = framed(area);
    const QList<QPoint> border{{frame.left() + 1, area.center().y()},
                               {frame.right() - 1, area.center().y()},
                               {area.center().x(), frame.top() + 1},
                               {area.center().x(), frame.bottom() - 1}};
    for (const QPoint& position : border) {
        if (!isLike(colourAt(position), kBorder))
            return QStringLiteral("the border at (%1, %2)").arg(position.x()).arg(position.y());
    }
    return {};
}

QString RegionTest::wrongInTheFrame(const QRect& area)
{
    const QRect frame = framed(area);
    QString wrong = wrongInTheBorder(area);
    if (!wrong.isEmpty())
        return wrong;
    const QList<QPoint> clear{area.topLeft() + QPoint(2, 2), area.bottomRight() - QPoint(2, 2), area.center(),
                              frame.bottomRight() + QPoint(3, 3)};
    for (const QPoint& position : clear) {
        if (!isLike(colourAt(position), kBackdrop))
            return QStringLiteral("(%1, %2) is covered").arg(position.x()).arg(position.y());
    }
    return {};
}

bool RegionTest::isVeilActive()
{
    // One of those on several screens.
    return qobject_cast<AreaSelector*>(QApplication::activeWindow()) != nullptr;
}

void RegionTest::dragRegion() const
{
    click(*child<Tile>(QStringLiteral("regionTile")));
    QTRY_VERIFY(isVeilActive());
    waitUntilStill();
    drag(region().topLeft(), region().bottomRight());
    QTRY_VERIFY(frame() != nullptr && shownWindow<AreaSelector>() == nullptr);
    waitUntilStill();
}

void RegionTest::choosePreset(const QString& name) const
{
    auto* const box = child<QComboBox>(QStringLiteral("ratioBox"));
    click(*box);
    QTRY_VERIFY(box->view()->isVisible());
    waitUntilStill();
    const QModelIndex entry = box->model()->index(box->findText(name), box->modelColumn());
    click(box->view()->viewport()->mapToGlobal(box->view()->visualRect(entry).center()));
    QTRY_VERIFY(!box->view()->isVisible());
}

void RegionTest::duringTheCountdown(const std::function<void()>& look)
{
    whenCountingDown(m_window.get(), [this, look] {
        QTRY_VERIFY(m_window->isMinimized());
        waitUntilStill();
        look();
        m_hasLooked = true;
        press(QStringLiteral("F9"));
    });
}

bool RegionTest::isCancelled(const MessageCapture& messages) const
{
    // What a countdown that has run to its end says where no engine runs.
    const bool isOver = !messages.texts().filter(QStringLiteral("OBS wrapper not initialized")).isEmpty();
    return m_hasLooked && !isOver && shownWindow<SCCountdownWidget>() == nullptr && !m_window->isMinimized();
}

QPushButton* RegionTest::barButton(const char* name)
{
    for (const QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->objectName() == QLatin1String("buttonBackground"))
            return window->findChild<QPushButton*>(QLatin1String(name));
    }
    return nullptr;
}

QString RegionTest::field(const char* name) const
{
    return child<QLineEdit>(QLatin1String(name))->text();
}

void RegionTest::expectFields(const QSize& logical) const
{
    QTRY_COMPARE(field("widthEdit"), QString::number(int(logical.width() * scale())));
    QCOMPARE(field("heightEdit"), QString::number(int(logical.height() * scale())));
}

void RegionTest::expectPosition(const MessageCapture& messages, const QRect& area)
{
    const QStringList positions = messages.texts().filter(QStringLiteral("] position "));
    QCOMPARE(positions.isEmpty() ? QString() : positions.constLast(), QStringLiteral("[DEBUG] position %1 %2 %3 %4")
                                                                          .arg(area.x())
                                                                          .arg(area.y())
                                                                          .arg(area.x() + area.width())
                                                                          .arg(area.y() + area.height()));
}

QStringList RegionTest::selectedTiles() const
{
    QStringList names;
    for (const Tile* const tile : m_window->findChildren<Tile*>()) {
        if (tile->isSelected())
            names.append(tile->objectName());
    }
    return names;
}
