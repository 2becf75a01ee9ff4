// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sclogger.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "tests/support/captureform.h"
#include "tests/support/messagecapture.h"
#include "tests/support/regiontiles.h"
#include "tests/support/widgetimage.h"
#include "tests/support/windowtest.h"

#include <QFile>
#include <QMenu>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdlib>

namespace {

/// Two screens for Qt's platform without a display.
constexpr char kScreens[] = R"({"screens": [
    {"name": "Main", "x": 0, "y": 0, "width": 1280, "height": 720,
     "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1},
    {"name": "Side & Co", "x": 1280, "y": 40, "width": 1024, "height": 600,
     "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})";
constexpr QRect kMain(0, 0, 1280, 720);
constexpr QRect kSide(1280, 40, 1024, 600);

class TwoScreenForm : public CaptureForm
{
public:
    CaptureController& capture() { return *m_capture; }
    Tile& fullScreenTile() { return *m_ui.fullScreenTile; }
    QString shownSize() const { return m_ui.widthEdit->text() + QLatin1Char('x') + m_ui.heightEdit->text(); }
};

QList<AreaSelector*> selectors()
{
    QList<AreaSelector*> shown;
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        auto* const selector = qobject_cast<AreaSelector*>(window);
        if (selector != nullptr && selector->isVisible())
            shown.append(selector);
    }
    std::ranges::sort(shown, {}, [](const AreaSelector* selector) { return selector->x(); });
    return shown;
}

QStringList texts(const QMenu& menu)
{
    QStringList texts;
    for (const QAction* const entry : menu.actions())
        texts.append(entry->text());
    return texts;
}

int checkedEntry(const QMenu& menu)
{
    int checked = -1;
    for (qsizetype index = 0; index < menu.actions().size(); ++index) {
        if (menu.actions().at(index)->isChecked())
            checked = checked < 0 ? static_cast<int>(index) : -2;
    }
    return checked;
}

} // namespace

/// What is captured with two screens side by side, where recordings show one of them: the engine has not started.
class TestScreenChoice : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(SCLogger::instance()->initialize());
        QCOMPARE(QGuiApplication::screens().size(), 2);
        QCOMPARE(QGuiApplication::primaryScreen()->geometry(), kMain);
    }

    void init()
    {
        windowtest::resetSettings();
        m_form = std::make_unique<TwoScreenForm>();
    }

    void cleanup() { m_form.reset(); }

    void primaryScreenIsChosenAtFirst()
    {
        QCOMPARE(m_form->fullScreenTile().note(), QStringLiteral("Screen 1"));
        QCOMPARE(m_form->fullScreenTile().toolTip(), QStringLiteral("Screen 1: 1280 x 720 (Main)"));
        QCOMPARE(m_form->fullScreenTile().accessibleDescription(), m_form->fullScreenTile().toolTip());
        const QMenu* const menu = openMenu();
        QVERIFY(menu != nullptr);
        QCOMPARE(texts(*menu), (QStringList{"Screen 1: 1280 x 720 (Main)", "Screen 2: 1024 x 600 (Side && Co)"}));
        QCOMPARE(checkedEntry(*menu), 0);
        QCOMPARE(m_form->capture().area(), kMain);
        QCOMPARE(m_form->shownSize(), QStringLiteral("1280x720"));
    }

    void chosenScreenIsCapturedWholeUntilAnotherIs()
    {
        openMenu()->actions().at(1)->trigger();
        QCOMPARE(m_form->capture().area(), kSide);
        QCOMPARE(m_form->capture().videoSize(), kSide.size());
        QCOMPARE(m_form->shownSize(), QStringLiteral("1024x600"));
        QCOMPARE(m_form->fullScreenTile().note(), QStringLiteral("Screen 2"));
        QCOMPARE(m_form->fullScreenTile().toolTip(), QStringLiteral("Screen 2: 1024 x 600 (Side & Co)"));
        // Also after a region.
        dragRegion(*m_form, {100, 80}, {419, 319});
        QTest::mouseClick(&m_form->fullScreenTile(), Qt::LeftButton);
        QCOMPARE(m_form->capture().area(), kSide);
        QMenu* const menu = shownWindow<QMenu>();
        QCOMPARE(checkedEntry(*menu), 1);
        menu->actions().at(0)->trigger();
        QCOMPARE(m_form->capture().area(), kMain);
        QCOMPARE(m_form->fullScreenTile().note(), QStringLiteral("Screen 1"));
    }

    void menuIsUsedByTheKeyboard()
    {
        QTest::keyClick(&m_form->fullScreenTile(), Qt::Key_Space);
        auto* const menu = shownWindow<QMenu>();
        QVERIFY(menu != nullptr);
        QCOMPARE(menu->activeAction(), menu->actions().at(0));
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
        QCOMPARE(m_form->capture().area(), kSide);
        QVERIFY(shownWindow<QMenu>() == nullptr);
    }

    void menuLeftByEscapeKeepsTheChoice()
    {
        openMenu()->actions().at(1)->trigger();
        QTest::keyClick(openMenu(), Qt::Key_Escape);
        QCOMPARE(m_form->capture().area(), kSide);
        QCOMPARE(selectedTiles(*m_form), QStringList{"fullScreenTile"});
    }

    void windowModeRecordsTheChosenScreen()
    {
        openMenu()->actions().at(1)->trigger();
        QTest::mouseClick(m_form->findChild<Tile*>(QStringLiteral("windowTile")), Qt::LeftButton);
        QCOMPARE(m_form->capture().area(), kSide);
    }

    void regionIsDraggedOutOnEitherScreen()
    {
        const QList<AreaSelector*> shown = beginRegion();
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown.at(0)->geometry(), kMain);
        QCOMPARE(shown.at(1)->geometry(), kSide);
        drag(*shown.at(1), {100, 80}, {419, 319});
        const QRect area(1380, 120, 320, 240);
        QCOMPARE(m_form->capture().area(), area);
        QCOMPARE(shownWindow<DrawWindow>()->geometry(), area.adjusted(-4, -4, 4, 4));
        QCOMPARE(m_form->shownSize(), QStringLiteral("320x240"));
        QVERIFY(selectors().isEmpty());
        QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    }

    void dragGoesOnOverTheOtherScreen()
    {
        const QList<AreaSelector*> shown = beginRegion();
        const QImage before = imageOf(*shown.at(1));
        QTest::mousePress(shown.at(0), Qt::LeftButton, {}, {1000, 100});
        QTest::mouseMove(shown.at(0), {1379, 300});
        const QImage during = imageOf(*shown.at(1));
        QVERIFY(during.pixel(50, 150) != before.pixel(50, 150));
        QCOMPARE(during.pixel(150, 150), before.pixel(150, 150));
        QCOMPARE(during.pixel(50, 300), before.pixel(50, 300));
        QTest::keyClick(shown.at(1), Qt::Key_Escape);
        QVERIFY(selectors().isEmpty());
        QTest::mouseRelease(shown.at(0), Qt::LeftButton, {}, {1379, 300});
        QCOMPARE(selectedTiles(*m_form), QStringList{"fullScreenTile"});
    }

    void regionAcrossBothIsCutOffWithItsFrame_data()
    {
        QTest::addColumn<QPoint>("to");
        QTest::addColumn<QRect>("area");
        QTest::newRow("mostly on the first") << QPoint(1479, 399) << QRect(1000, 100, 280, 300);
        QTest::newRow("mostly on the second") << QPoint(1779, 399) << QRect(1280, 100, 500, 300);
    }

    void regionAcrossBothIsCutOffWithItsFrame()
    {
        QFETCH(const QRect, area);
        drag(*beginRegion().at(0), {1000, 100}, toPoint());
        QCOMPARE(m_form->capture().area(), area);
        QCOMPARE(shownWindow<DrawWindow>()->geometry(), area.adjusted(-4, -4, 4, 4));
    }

    void frameReleasedAcrossBothIsCutOff()
    {
        drag(*beginRegion().at(0), {100, 80}, {419, 319});
        auto* const frame = shownWindow<DrawWindow>();
        const QRect moved(1100, 100, 320, 240);
        frame->setGeometry(moved.adjusted(-4, -4, 4, 4));
        emit frame->windowGeometryChanged(false, moved.topLeft(), moved.bottomRight());
        // As narrow as a frame can be.
        const QRect cut(1088, 100, 192, 240);
        QCOMPARE(m_form->capture().area(), cut);
        QCOMPARE(frame->geometry(), cut.adjusted(-4, -4, 4, 4));
    }

private:
    static QPoint toPoint()
    {
        QFETCH(const QPoint, to);
        return to;
    }

    QMenu* openMenu()
    {
        QTest::mouseClick(&m_form->fullScreenTile(), Qt::LeftButton);
        return shownWindow<QMenu>();
    }

    QList<AreaSelector*> beginRegion()
    {
        QTest::mouseClick(m_form->findChild<Tile*>(QStringLiteral("regionTile")), Qt::LeftButton);
        return selectors();
    }

    static void drag(AreaSelector& selector, const QPoint& from, const QPoint& to)
    {
        QTest::mousePress(&selector, Qt::LeftButton, {}, from);
        QTest::mouseMove(&selector, to);
        QTest::mouseRelease(&selector, Qt::LeftButton, {}, to);
    }

    std::unique_ptr<TwoScreenForm> m_form;
};

static int run(int argc, char* argv[])
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("screens.json")));
    if (!file.open(QIODevice::WriteOnly) || file.write(kScreens) < 0)
        return EXIT_FAILURE;
    file.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toLocal8Bit());
    return windowtest::run<TestScreenChoice>(argc, argv);
}

REGISTER_TEST(run);

#include "test_screenchoice_x11.moc"
