// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "mainwindow/recording/sccountdownwidget.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTranslator>

namespace {

constexpr int kStepMs = 20;

} // namespace

class TestSCCountdownWidget : public QObject
{
    Q_OBJECT

private slots:
    void init() { storeHotkey(QStringLiteral("F9")); }

    void startOfZeroOrLessEmitsFinishedWithoutShowing_data()
    {
        QTest::addColumn<int>("count");
        QTest::newRow("zero") << 0;
        QTest::newRow("negative") << -3;
    }

    void startOfZeroOrLessEmitsFinishedWithoutShowing()
    {
        QFETCH(int, count);
        SCCountdownWidget countdown(nullptr);
        const QSignalSpy finished(&countdown, &SCCountdownWidget::countdownFinished);
        countdown.start(count);
        QCOMPARE(finished.size(), 1);
        QVERIFY(!countdown.isVisible());
        countdown.exec();
        QVERIFY(!countdown.isCounting());
    }

    void withTheHotkeyNoneOnlyTheCircleIsShown()
    {
        storeHotkey(QStringLiteral("None"));
        const SCCountdownWidget countdown(nullptr);
        QVERIFY(countdown.findChild<QLabel*>(QStringLiteral("numberLabel")) != nullptr);
        QCOMPARE(countdown.findChildren<QLabel*>().size(), 1);
        QCOMPARE(countdown.size(), QSize(200, 240));
    }

    void cancelWithoutACountdownDoesNothing()
    {
        SCCountdownWidget countdown(nullptr);
        const QSignalSpy finished(&countdown, &SCCountdownWidget::countdownFinished);
        countdown.cancel();
        QCOMPARE(finished.size(), 0);
        countdown.start(3);
        QVERIFY(countdown.isCounting());
        countdown.cancel();
        countdown.cancel();
        QVERIFY(!countdown.isCounting());
    }

    void looksRoundAndDark()
    {
        const SCCountdownWidget countdown(nullptr);
        QCOMPARE(static_cast<int>(countdown.windowFlags() & ~Qt::Window), 0x40812 & ~static_cast<int>(Qt::Window));
        QVERIFY(countdown.testAttribute(Qt::WA_TranslucentBackground));
        QCOMPARE(countdown.size(), QSize(200, 240));
        const auto* const number = countdown.findChild<QLabel*>(QStringLiteral("numberLabel"));
        QCOMPARE(number->size(), QSize(200, 200));
        QCOMPARE(number->parentWidget()->size(), QSize(200, 200));
        QCOMPARE(number->font().pointSize(), 60);
        QCOMPARE(number->font().weight(), 700);
        QCOMPARE(number->font().family(), QStringLiteral("Segoe UI"));
        QCOMPARE(number->alignment(), Qt::AlignCenter);
        QCOMPARE(number->styleSheet(),
                 QStringLiteral("QLabel {color: #FFFFFF;background-color: #28282E;border: 2px solid "
                                "#007ACC;border-radius: 100px;width: 200px;height: 200px;}"));
    }

    void hintNamesTheHotkey()
    {
        storeHotkey(QStringLiteral("F7"));
        const SCCountdownWidget countdown(nullptr);
        const auto* const hint = countdown.findChild<QLabel*>(QStringLiteral("hintLabel"));
        QCOMPARE(hint->text(), QStringLiteral("Start/Stop: F7"));
        QCOMPARE(hint->parentWidget()->size(), QSize(180, 30));
        QCOMPARE(hint->parentWidget()->styleSheet(),
                 QStringLiteral("QWidget {background-color: #28282E;border-radius: 4px;}"));
        QCOMPARE(hint->styleSheet(),
                 QStringLiteral("QLabel {color: #FFFFFF;background-color: transparent;padding: 4px 12px;}"));
        QCOMPARE(hint->alignment(), Qt::AlignRight | Qt::AlignVCenter);
        QCOMPARE(hint->font().pointSize(), 10);
        QCOMPARE(hint->font().family(), QStringLiteral("Segoe UI"));
    }

    void hintIsTranslated()
    {
        class Translation : public QTranslator
        {
        public:
            QString translate(const char*, const char* text, const char*, int) const override
            {
                return qstrcmp(text, "Start/Stop") == 0 ? QStringLiteral("Anfang/Ende") : QString();
            }
            bool isEmpty() const override { return false; }
        };
        Translation translation;
        QApplication::installTranslator(&translation);
        const SCCountdownWidget countdown(nullptr);
        QApplication::removeTranslator(&translation);
        QCOMPARE(countdown.findChild<QLabel*>(QStringLiteral("hintLabel"))->text(), QStringLiteral("Anfang/Ende: F9"));
    }

    void circleIsTenPixelsAboveTheHint()
    {
        SCCountdownWidget countdown(nullptr);
        countdown.start(1);
        const QWidget* const circle = countdown.findChild<QLabel*>(QStringLiteral("numberLabel"))->parentWidget();
        const QWidget* const hint = countdown.findChild<QLabel*>(QStringLiteral("hintLabel"))->parentWidget();
        QCOMPARE(circle->geometry(), QRect(0, 0, 200, 200));
        QCOMPARE(hint->geometry(), QRect(10, 210, 180, 30));
    }

    void everyTickLowersTheNumberAndZeroIsNeverVisible()
    {
        SCCountdownWidget countdown(nullptr);
        const QSignalSpy finished(&countdown, &SCCountdownWidget::countdownFinished);
        const auto* const number = countdown.findChild<QLabel*>(QStringLiteral("numberLabel"));
        countdown.start(3);
        for (const char* shown : {"3", "2", "1"}) {
            QCOMPARE(number->text(), QLatin1String(shown));
            QVERIFY(countdown.isVisible());
            QCOMPARE(finished.size(), 0);
            countdown.updateCountdown();
        }
        QCOMPARE(number->text(), QStringLiteral("0"));
        QVERIFY(!countdown.isVisible());
        QCOMPARE(finished.size(), 1);
        QVERIFY(!countdown.isCounting());
    }

    void stepIsASecondUnlessAskedForLess()
    {
        const SCCountdownWidget countdown(nullptr);
        QCOMPARE(countdown.findChild<QTimer*>()->interval(), 1000);
        QVERIFY(!countdown.findChild<QTimer*>()->isSingleShot());
        const SCCountdownWidget brief(nullptr, kStepMs);
        QCOMPARE(brief.findChild<QTimer*>()->interval(), kStepMs);
    }

    void execReturnsWhenAllStepsAreOver()
    {
        SCCountdownWidget countdown(nullptr, kStepMs);
        const QSignalSpy finished(&countdown, &SCCountdownWidget::countdownFinished);
        QStringList shown;
        const auto* const number = countdown.findChild<QLabel*>(QStringLiteral("numberLabel"));
        connect(countdown.findChild<QTimer*>(), &QTimer::timeout, this, [&] { shown << number->text(); });
        countdown.start(3);
        countdown.exec();
        QCOMPARE(shown, (QStringList{"2", "1", "0"}));
        QCOMPARE(finished.size(), 1);
        QVERIFY(!countdown.isVisible());
    }

    void cancelLetsExecReturnWithoutFinishedAndWithoutHiding()
    {
        SCCountdownWidget countdown(nullptr);
        const QSignalSpy finished(&countdown, &SCCountdownWidget::countdownFinished);
        countdown.start(3);
        QTimer::singleShot(0, &countdown, &SCCountdownWidget::cancel);
        countdown.exec();
        QCOMPARE(finished.size(), 0);
        QVERIFY(countdown.isVisible());
        QVERIFY(!countdown.isCounting());
    }

    void canBeStartedAgainAfterACancel()
    {
        SCCountdownWidget countdown(nullptr);
        countdown.start(3);
        countdown.cancel();
        countdown.start(2);
        QCOMPARE(countdown.findChild<QLabel*>(QStringLiteral("numberLabel"))->text(), QStringLiteral("2"));
        QVERIFY(countdown.isCounting());
    }

private:
    static void storeHotkey(const QString& hotkey) { openSettings()->setValue(settingskeys::kRecordingHotkey, hotkey); }
};

REGISTER_TEST(windowtest::run<TestSCCountdownWidget>);

#include "test_sccountdownwidget.moc"
