// SPDX-License-Identifier: GPL-3.0-or-later
#include "overlays/scswitchwidget.h"
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"

#include <QImage>
#include <QPainter>
#include <QPropertyAnimation>
#include <QSignalSpy>
#include <QTest>

namespace {

constexpr int kAnimationMs = 150;

/// A switch's image: its track's position, radius and colour, and its knob's.
QImage expectedImage(const QSize& size, const QRect& track, int radius, const QColor& trackColor, const QRect& knob,
                     const QColor& knobColor)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(trackColor);
    painter.drawRoundedRect(track, radius, radius, Qt::AbsoluteSize);
    painter.setBrush(knobColor);
    painter.drawEllipse(knob);
    return image;
}

QPropertyAnimation& animationOf(const SCSwitchWidget& toggle)
{
    return *toggle.findChild<QPropertyAnimation*>();
}

} // namespace

class TestSCSwitchWidget : public QObject
{
    Q_OBJECT

private slots:
    void isOffWhenMade()
    {
        const SCSwitchWidget toggle;
        QVERIFY(!toggle.isChecked());
        QCOMPARE(toggle.position(), 0.0);
        QCOMPARE(toggle.activeColor(), QColor(0xBC, 0x38, 0x2F));
        QCOMPARE(toggle.inactiveColor(), QColor(0x1E, 0x1E, 0x1E));
        QCOMPARE(toggle.sizeHint(), QSize(25, 12));
        QCOMPARE(toggle.sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);
        QCOMPARE(toggle.sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
        QVERIFY(toggle.testAttribute(Qt::WA_MouseTracking));
        QCOMPARE(toggle.focusPolicy(), Qt::StrongFocus);
        const QPropertyAnimation& animation = animationOf(toggle);
        QCOMPARE(animation.propertyName(), QByteArray("position"));
        QCOMPARE(animation.targetObject(), &toggle);
        QCOMPARE(animation.duration(), kAnimationMs);
        QCOMPARE(animation.easingCurve().type(), QEasingCurve::InOutExpo);
    }

    void settingTheCurrentValueEmitsNothingAndStartsNoAnimation()
    {
        SCSwitchWidget toggle;
        const QSignalSpy changed(&toggle, &SCSwitchWidget::checkedChanged);
        toggle.setChecked(false);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(animationOf(toggle).state(), QAbstractAnimation::Stopped);
        toggle.setChecked(true);
        animationOf(toggle).setCurrentTime(kAnimationMs);
        QCOMPARE(animationOf(toggle).state(), QAbstractAnimation::Stopped);
        toggle.setChecked(true);
        QCOMPARE(changed, (QList<QVariantList>{{true}}));
        QCOMPARE(animationOf(toggle).state(), QAbstractAnimation::Stopped);
    }

    void aChangeSlidesTheKnobToItsEnd()
    {
        SCSwitchWidget toggle;
        toggle.setChecked(true);
        QCOMPARE(animationOf(toggle).state(), QAbstractAnimation::Running);
        QTRY_COMPARE(toggle.position(), 1.0);
        toggle.setChecked(false);
        QTRY_COMPARE(toggle.position(), 0.0);
    }

    void aToggleDuringTheAnimationStartsFromWhereTheKnobIs()
    {
        SCSwitchWidget toggle;
        toggle.setChecked(true);
        animationOf(toggle).pause();
        animationOf(toggle).setCurrentTime(80);
        const double half = toggle.position();
        QVERIFY2(half > 0.4 && half < 1.0, qPrintable(QString::number(half)));
        toggle.setChecked(false);
        QCOMPARE(animationOf(toggle).startValue().toDouble(), half);
        QCOMPARE(animationOf(toggle).endValue().toDouble(), 0.0);
        QCOMPARE(animationOf(toggle).state(), QAbstractAnimation::Running);
    }

    void aLeftClickTogglesWhereverItIsReleased()
    {
        SCSwitchWidget toggle;
        toggle.resize(toggle.sizeHint());
        const QSignalSpy changed(&toggle, &SCSwitchWidget::checkedChanged);
        QTest::mousePress(&toggle, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
        QCOMPARE(changed.size(), 0);
        QTest::mouseRelease(&toggle, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
        QTest::mousePress(&toggle, Qt::LeftButton, Qt::NoModifier, QPoint(5, 5));
        QTest::mouseRelease(&toggle, Qt::LeftButton, Qt::NoModifier, QPoint(200, 90));
        QCOMPARE(changed, (QList<QVariantList>{{true}, {false}}));
    }

    void otherButtonsDoNothing()
    {
        SCSwitchWidget toggle;
        toggle.resize(toggle.sizeHint());
        QTest::mouseClick(&toggle, Qt::RightButton, Qt::NoModifier, QPoint(5, 5));
        QTest::mouseClick(&toggle, Qt::MiddleButton, Qt::NoModifier, QPoint(5, 5));
        QVERIFY(!toggle.isChecked());
    }

    void theSpaceBarToggles()
    {
        SCSwitchWidget toggle;
        QTest::keyClick(&toggle, Qt::Key_Space);
        QVERIFY(toggle.isChecked());
        QTest::keyClick(&toggle, Qt::Key_A);
        QVERIFY(toggle.isChecked());
    }

    void looks_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<double>("position");
        QTest::addColumn<QRect>("track");
        QTest::addColumn<int>("radius");
        QTest::addColumn<QColor>("trackColor");
        QTest::addColumn<QRect>("knob");
        QTest::addColumn<QColor>("knobColor");
        const QColor off(0x1E, 0x1E, 0x1E);
        const QColor on(0xBC, 0x38, 0x2F);
        QTest::newRow("off at the size hint")
            << QSize(25, 12) << 0.0 << QRect(2, 2, 21, 8) << 4 << off << QRect(2, 1, 10, 10) << QColor(170, 170, 170);
        QTest::newRow("on at the size hint")
            << QSize(25, 12) << 1.0 << QRect(2, 2, 21, 8) << 4 << on << QRect(13, 1, 10, 10) << QColor(255, 255, 255);
        // 188 / 2 + 30 / 2, 56 / 2 + 15, 23.5 + 15; 127.5 + 85; 11 / 2 + 2
        QTest::newRow("half way") << QSize(25, 12) << 0.5 << QRect(2, 2, 21, 8) << 4 << QColor(109, 43, 38)
                                  << QRect(7, 1, 10, 10) << QColor(212, 212, 212);
        QTest::newRow("taller than its knob")
            << QSize(40, 30) << 1.0 << QRect(2, 11, 36, 8) << 4 << on << QRect(28, 10, 10, 10) << QColor(255, 255, 255);
        QTest::newRow("lower than ten pixels")
            << QSize(25, 7) << 0.0 << QRect(2, 1, 21, 5) << 2 << off << QRect(2, 0, 7, 7) << QColor(170, 170, 170);
    }

    void looks()
    {
        QFETCH(const QSize, size);
        QFETCH(const double, position);
        QFETCH(const QRect, track);
        QFETCH(const int, radius);
        QFETCH(const QColor, trackColor);
        QFETCH(const QRect, knob);
        QFETCH(const QColor, knobColor);
        SCSwitchWidget toggle;
        toggle.resize(size);
        toggle.setPosition(position);
        QCOMPARE(imageOf(toggle), expectedImage(size, track, radius, trackColor, knob, knobColor));
    }

    void coloursAreItsProperties()
    {
        SCSwitchWidget toggle;
        toggle.resize(toggle.sizeHint());
        QVERIFY(toggle.setProperty("inactiveColor", QColor(10, 20, 30)));
        QVERIFY(toggle.setProperty("activeColor", QColor(210, 120, 130)));
        QCOMPARE(imageOf(toggle).pixelColor(18, 6), QColor(10, 20, 30));
        QVERIFY(toggle.setProperty("position", 1.0));
        QCOMPARE(imageOf(toggle).pixelColor(8, 6), QColor(210, 120, 130));
        QVERIFY(toggle.setProperty("checked", true));
        QVERIFY(toggle.isChecked());
    }
};

REGISTER_TEST(testrun::gui<TestSCSwitchWidget>);
#include "test_scswitchwidget.moc"
