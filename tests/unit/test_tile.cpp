// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/tile.h"
#include "tests/support/testrun.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

class TestTile : public QObject
{
    Q_OBJECT

private slots:
    void textIsShownAndReadAloud()
    {
        Tile tile;
        tile.setText(QStringLiteral("Full Screen"));
        QCOMPARE(tile.text(), QStringLiteral("Full Screen"));
        QCOMPARE(tile.accessibleName(), QStringLiteral("Full Screen"));
    }

    void noteIsShownBelowTheText()
    {
        Tile tile;
        tile.setText(QStringLiteral("Full Screen"));
        tile.show();
        const QSize without = tile.minimumSizeHint();
        auto* const note = tile.findChild<QLabel*>(QStringLiteral("tileNote"));
        QVERIFY(!note->isVisible());
        tile.setNote(QStringLiteral("A screen of a long name"));
        QVERIFY(note->isVisible());
        QCOMPARE(tile.note(), QStringLiteral("A screen of a long name"));
        QVERIFY(tile.minimumSizeHint().width() > without.width());
        QCOMPARE(tile.accessibleName(), QStringLiteral("Full Screen"));
        tile.setNote({});
        QVERIFY(!note->isVisible());
        QCOMPARE(tile.minimumSizeHint(), without);
    }

    void keyboardActivatesIt()
    {
        Tile tile;
        const QSignalSpy activated(&tile, &Tile::activated);
        for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
            QTest::keyClick(&tile, key);
        QCOMPARE(activated.size(), 3);
        QTest::keyClick(&tile, Qt::Key_A);
        QCOMPARE(activated.size(), 3);
        QVERIFY((tile.focusPolicy() & Qt::TabFocus) != 0);
    }

    void leftReleaseOnItActivatesIt()
    {
        Tile tile;
        const QSignalSpy activated(&tile, &Tile::activated);
        QTest::mouseClick(&tile, Qt::RightButton);
        QTest::mousePress(&tile, Qt::LeftButton);
        QTest::mouseRelease(&tile, Qt::LeftButton, {}, {-20, 10});
        QCOMPARE(activated.size(), 0);
        QTest::mouseClick(&tile, Qt::LeftButton);
        QCOMPARE(activated.size(), 1);
        tile.setEnabled(false);
        QTest::mouseClick(&tile, Qt::LeftButton);
        QCOMPARE(activated.size(), 1);
    }

    void styleSheetSeesTheSelection()
    {
        Tile tile;
        tile.setStyleSheet(
            QStringLiteral("Tile { background-color: #010203; } Tile[selected=\"true\"] { "
                           "background-color: #aabbcc; } Tile[selected=\"true\"] QLabel { color: red; }"));
        tile.resize(104, 80);
        QCOMPARE(colour(tile), QColor(0x01, 0x02, 0x03));
        tile.setSelected(true);
        QCOMPARE(colour(tile), QColor(0xaa, 0xbb, 0xcc));
        QCOMPARE(tile.findChildren<QLabel*>().last()->palette().windowText().color(), QColor(Qt::red));
        tile.setSelected(false);
        QCOMPARE(colour(tile), QColor(0x01, 0x02, 0x03));
    }

    void iconIsLightWhileSelected()
    {
        Tile tile;
        tile.setIconName(QStringLiteral("full-screen"));
        const auto* const icon = tile.findChildren<QLabel*>().first();
        const QImage dark = icon->pixmap().toImage();
        tile.setSelected(true);
        const QImage light = icon->pixmap().toImage();
        // Blank where the system has no plug-in for the icons' format.
        QCOMPARE(light == dark, dark.isNull());
        tile.setSelected(false);
        QCOMPARE(icon->pixmap().toImage(), dark);
    }

private:
    static QColor colour(Tile& tile) { return tile.grab().toImage().pixelColor(3, 3); }
};

REGISTER_TEST(testrun::gui<TestTile>);

#include "test_tile.moc"
