// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/capture/pointereffects.h"
#include "tests/support/testrun.h"

#include <QTest>

#include <obs.h>

/// What the capture source's settings say of the circles around the pointer.
class TestPointerEffects : public QObject
{
    Q_OBJECT

private slots:
    void colorsAreFourFractions_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QList<float>>("expected");
        QTest::newRow("as written") << QByteArray("0.0, 1.0, 0.5, 0.3") << QList<float>{0.0F, 1.0F, 0.5F, 0.3F};
        QTest::newRow("no blanks") << QByteArray("1,0,0,.7") << QList<float>{1.0F, 0.0F, 0.0F, 0.7F};
        QTest::newRow("many blanks") << QByteArray("  0.25 ,\t0.5,0.75 , 1 ") << QList<float>{0.25F, 0.5F, 0.75F, 1.0F};
        QTest::newRow("beyond the ends") << QByteArray("-1, 2, 0.5, 255") << QList<float>{0.0F, 1.0F, 0.5F, 1.0F};
    }

    void colorsAreFourFractions()
    {
        QFETCH(const QByteArray, text);
        QFETCH(const QList<float>, expected);
        const auto color = parseEffectColor(text.constData());
        QVERIFY(color.has_value());
        QCOMPARE(QList<float>(color->begin(), color->end()), expected);
    }

    void brokenColorsAreNone_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("three") << QByteArray("0.0, 1.0, 0.5");
        QTest::newRow("five") << QByteArray("0.0, 1.0, 0.5, 0.3, 0.1");
        QTest::newRow("a word") << QByteArray("0.0, green, 0.5, 0.3");
        QTest::newRow("a gap") << QByteArray("0.0, , 0.5, 0.3");
        QTest::newRow("no number") << QByteArray("nan, 0, 0, 1");
        QTest::newRow("endless") << QByteArray("inf, 0, 0, 1");
        QTest::newRow("decimal commas") << QByteArray("0,0; 1,0; 0,5; 0,3");
        QTest::newRow("a name") << QByteArray("#00ff80");
        QTest::newRow("no text") << QByteArray("\xff\xfe");
    }

    void brokenColorsAreNone()
    {
        QFETCH(const QByteArray, text);
        QVERIFY(!parseEffectColor(text.constData()).has_value());
    }

    void eachCircleHasASwitchAndAColor()
    {
        const ObsDataHandle settings(obs_data_create());
        QVERIFY(PointerEffectChoice::from(settings.get()).isEmpty());
        obs_data_set_string(settings.get(), "fixed_circle_color", "0, 1, 0, 1");
        obs_data_set_string(settings.get(), "left_click_color", "0, 0, 1, 1");
        obs_data_set_string(settings.get(), "right_click_color", "1, 0, 0, 1");
        QVERIFY(PointerEffectChoice::from(settings.get()).isEmpty());
        obs_data_set_bool(settings.get(), "show_left_click", true);
        const PointerEffectChoice left = PointerEffectChoice::from(settings.get());
        QVERIFY(!left.highlight && !left.rightClick);
        QCOMPARE(left.leftClick, std::optional(EffectColor{0.0F, 0.0F, 1.0F, 1.0F}));
        obs_data_set_bool(settings.get(), "show_fixed_circle", true);
        obs_data_set_bool(settings.get(), "show_right_click", true);
        const PointerEffectChoice all = PointerEffectChoice::from(settings.get());
        QCOMPARE(all.highlight, std::optional(EffectColor{0.0F, 1.0F, 0.0F, 1.0F}));
        QCOMPARE(all.rightClick, std::optional(EffectColor{1.0F, 0.0F, 0.0F, 1.0F}));
    }

    void circleWithABrokenColorIsLeftOut()
    {
        const ObsDataHandle settings(obs_data_create());
        obs_data_set_bool(settings.get(), "show_fixed_circle", true);
        obs_data_set_string(settings.get(), "fixed_circle_color", "bright");
        obs_data_set_bool(settings.get(), "show_left_click", true);
        obs_data_set_string(settings.get(), "left_click_color", "0, 0, 1, 1");
        const PointerEffectChoice choice = PointerEffectChoice::from(settings.get());
        QVERIFY(!choice.highlight);
        QVERIFY(choice.leftClick.has_value());
    }
};

REGISTER_TEST(testrun::core<TestPointerEffects>);
#include "test_pointereffects.moc"
