// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "tests/support/widgetimage.h"
#include "widgets/blinkinglabel.h"

#include <QApplication>
#include <QProxyStyle>
#include <QTest>

namespace {

constexpr int kHalfPeriodMs = 30;

/// As where the user has animations off.
class StillStyle : public QProxyStyle
{
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* answer) const override
    {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, answer);
    }
};

bool isTextSeen(BlinkingLabel& label)
{
    const QImage image = imageOf(label);
    QImage nothing(image.size(), image.format());
    nothing.fill(Qt::transparent);
    return image != nothing;
}

} // namespace

class TestBlinkingLabel : public QObject
{
    Q_OBJECT

private slots:
    void textComesAndGoesAndStaysInTheEnd()
    {
        BlinkingLabel label(QStringLiteral("00:00:07"), nullptr, kHalfPeriodMs);
        label.show();
        QVERIFY(isTextSeen(label));
        label.setBlinking(true);
        QVERIFY(isTextSeen(label));
        for (int round = 0; round < 2; ++round) {
            QTRY_VERIFY(!isTextSeen(label));
            QCOMPARE(label.text(), QStringLiteral("00:00:07"));
            QTRY_VERIFY(isTextSeen(label));
        }
        QTRY_VERIFY(!isTextSeen(label));
        label.setBlinking(false);
        QVERIFY(isTextSeen(label));
    }

    void textIsSteadyWhereAnimationsAreOff()
    {
        BlinkingLabel animated(QStringLiteral("1"), nullptr, kHalfPeriodMs);
        BlinkingLabel steady(QStringLiteral("2"), nullptr, kHalfPeriodMs);
        StillStyle style;
        steady.setStyle(&style);
        animated.setBlinking(true);
        steady.setBlinking(true);
        for (int round = 0; round < 3; ++round) {
            QTRY_VERIFY(!isTextSeen(animated));
            QVERIFY(isTextSeen(steady));
            QTRY_VERIFY(isTextSeen(animated));
        }
    }
};

REGISTER_TEST(testrun::gui<TestBlinkingLabel>);
#include "test_blinkinglabel.moc"
