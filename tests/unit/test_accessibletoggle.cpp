// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/tile.h"
#include "overlays/scswitchwidget.h"
#include "tests/support/testrun.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

namespace {

QAccessibleInterface& seen(QWidget& widget)
{
    return *QAccessible::queryAccessibleInterface(&widget);
}

QString toggle()
{
    return QAccessibleActionInterface::toggleAction();
}

} // namespace

class TestAccessibleToggle : public QObject
{
    Q_OBJECT

private slots:
    void switchIsSeenAsACheckBox()
    {
        SCSwitchWidget control;
        control.setAccessibleName(QStringLiteral("System sound"));
        QCOMPARE(seen(control).role(), QAccessible::CheckBox);
        QCOMPARE(seen(control).text(QAccessible::Name), QStringLiteral("System sound"));
        QVERIFY(seen(control).state().checkable);
        QVERIFY(!seen(control).state().checked);
        control.setChecked(true);
        QVERIFY(seen(control).state().checked);
    }

    void tileIsSeenAsOneOfSeveral()
    {
        Tile tile;
        tile.setText(QStringLiteral("Region"));
        QCOMPARE(seen(tile).role(), QAccessible::RadioButton);
        QCOMPARE(seen(tile).text(QAccessible::Name), QStringLiteral("Region"));
        QVERIFY(!seen(tile).state().checked);
        tile.setSelected(true);
        QVERIFY(seen(tile).state().checked);
    }

    void actionDoesWhatTheSpaceBarDoes()
    {
        SCSwitchWidget control;
        const QSignalSpy switched(&control, &SCSwitchWidget::checkedChanged);
        QVERIFY(seen(control).actionInterface()->actionNames().contains(toggle()));
        seen(control).actionInterface()->doAction(toggle());
        QCOMPARE(switched.count(), 1);
        QVERIFY(control.isChecked());

        Tile tile;
        const QSignalSpy activated(&tile, &Tile::activated);
        seen(tile).actionInterface()->doAction(toggle());
        QCOMPARE(activated.count(), 1);
    }

    void disabledControlHasNoAction()
    {
        SCSwitchWidget control;
        control.setEnabled(false);
        QVERIFY(!seen(control).actionInterface()->actionNames().contains(toggle()));
        seen(control).actionInterface()->doAction(toggle());
        QVERIFY(!control.isChecked());
    }

    void otherWidgetsAreLeftToQt()
    {
        SCSwitchWidget control;
        QWidget plain;
        QVERIFY(!seen(plain).state().checkable);
        QVERIFY(seen(control).state().checkable);
    }
};

REGISTER_TEST(testrun::gui<TestAccessibleToggle>);

#include "test_accessibletoggle.moc"
