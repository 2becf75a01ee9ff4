// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/x11/damagetracker.h"
#include "tests/engine/xserver.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <memory>

namespace {

constexpr std::uint32_t kRed = 0xC81428;
constexpr std::uint32_t kGreen = 0x14C850;

QRegion changes(X11Connection& connection, DamageTracker& tracker)
{
    // What has happened so far was reported before this is answered.
    connection.updateDesktop();
    while (const auto event = connection.nextEvent())
        tracker.handle(*event);
    return tracker.take();
}

} // namespace

/// On servers of its own, so that nobody else draws.
class TestDamageTracker : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(start({})); }

    void everythingCountsAsChangedAtFirstAndThenOnlyWhatIsDrawn()
    {
        PaintedWindow window(QRect(30, 40, 100, 100), kRed, display());
        X11Connection connection(display());
        QVERIFY(connection.hasDamage());
        DamageTracker tracker(connection);
        QCOMPARE(changes(connection, tracker), QRegion(connection.desktop()));
        QCOMPARE(changes(connection, tracker), QRegion());
        window.paint(QRect(5, 6, 7, 8), kGreen);
        QCOMPARE(changes(connection, tracker), QRegion(35, 46, 7, 8));
        QCOMPARE(changes(connection, tracker), QRegion());
        window.paint(QRect(0, 0, 10, 10), kGreen);
        window.paint(QRect(50, 60, 10, 10), kGreen);
        QCOMPARE(changes(connection, tracker), QRegion(30, 40, 10, 10) + QRegion(80, 100, 10, 10));
        window.hide();
        QCOMPARE(changes(connection, tracker), QRegion(30, 40, 100, 100));
    }

    void manyChangesAreTheBoxAroundThem()
    {
        PaintedWindow window(QRect(0, 0, 300, 200), kRed, display());
        X11Connection connection(display());
        DamageTracker tracker(connection);
        changes(connection, tracker);
        for (int i = 0; i < 100; ++i)
            window.paint(QRect(2 * i, 2 * i, 1, 1), kGreen);
        QCOMPARE(changes(connection, tracker), QRegion(0, 0, 199, 199));
    }

    void everythingCountsAsChangedWhereTheServerDoesNotReport_data()
    {
        QTest::addColumn<QString>("missing");
        QTest::newRow("no damage") << QStringLiteral("DAMAGE");
        QTest::newRow("no XFixes") << QStringLiteral("XFIXES");
    }

    void everythingCountsAsChangedWhereTheServerDoesNotReport()
    {
        QFETCH(const QString, missing);
        QVERIFY(start({QStringLiteral("-extension"), missing}));
        X11Connection connection(display());
        QCOMPARE(connection.obstacle(), QString());
        QVERIFY(!connection.hasDamage());
        DamageTracker tracker(connection);
        QCOMPARE(changes(connection, tracker), QRegion(connection.desktop()));
        QCOMPARE(changes(connection, tracker), QRegion(connection.desktop()));
    }

private:
    bool start(const QStringList& options)
    {
        m_server = std::make_unique<XServer>();
        return m_server->start(
            QStringList{QStringLiteral("-screen"), QStringLiteral("0"), QStringLiteral("320x240x24")} + options);
    }

    const char* display() const { return m_server->display().constData(); }

    std::unique_ptr<XServer> m_server;
};

REGISTER_TEST(testrun::core<TestDamageTracker>);

#include "test_damagetracker.moc"
