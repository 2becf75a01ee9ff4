// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/testrun.h"
#include "widgets/icons.h"

#include <QApplication>
#include <QEnterEvent>
#include <QIcon>
#include <QPainter>
#include <QPushButton>
#include <QTest>

#include <algorithm>

namespace {

constexpr QSize kSize(20, 20);
constexpr QColor kBackground(0x28, 0x28, 0x2e);

QImage render(const QIcon& icon, QIcon::Mode mode, double devicePixelRatio = 1.0)
{
    return icon.pixmap(kSize, devicePixelRatio, mode).toImage().convertToFormat(QImage::Format_ARGB32);
}

/// What stands farthest from the windows' background when the icon is drawn on it; 0 where Qt has no plug-in
/// for the icons' format.
int contrast(const QImage& icon)
{
    QImage window(icon.size(), QImage::Format_RGB32);
    window.fill(kBackground);
    QPainter painter(&window);
    painter.drawImage(window.rect(), icon);
    painter.end();
    int largest = 0;
    for (int y = 0; y < window.height(); ++y) {
        for (int x = 0; x < window.width(); ++x)
            largest = std::max(largest, qGray(window.pixel(x, y)) - qGray(kBackground.rgb()));
    }
    return largest;
}

void hover(QWidget& widget, bool entered)
{
    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
    QEvent leave(QEvent::Leave);
    widget.setAttribute(Qt::WA_UnderMouse, entered);
    QApplication::sendEvent(&widget, entered ? static_cast<QEvent*>(&enter) : &leave);
}

} // namespace

/// The icons of controls that can be used, and of those that cannot.
class TestIcons : public QObject
{
    Q_OBJECT

private slots:
    void enabledIconIsJustTheFiles_data()
    {
        QTest::addColumn<QIcon::Mode>("mode");
        QTest::addColumn<double>("devicePixelRatio");
        for (const double ratio : {1.0, 1.5, 2.0}) {
            for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Active, QIcon::Selected})
                QTest::addRow("mode %d at %g", int(mode), ratio) << mode << ratio;
        }
    }

    void enabledIconIsJustTheFiles()
    {
        QFETCH(const QIcon::Mode, mode);
        QFETCH(const double, devicePixelRatio);
        for (const icons::Tone tone : {icons::Tone::Normal, icons::Tone::Light}) {
            const QIcon icon = icons::named(QStringLiteral("folder"), tone);
            const QIcon file(icons::path(QStringLiteral("folder"), tone));
            QCOMPARE(icon.isNull(), file.isNull());
            QCOMPARE(render(icon, mode, devicePixelRatio), render(file, mode, devicePixelRatio));
            QCOMPARE(icon.pixmap(kSize, devicePixelRatio, mode).devicePixelRatio(),
                     file.pixmap(kSize, devicePixelRatio, mode).devicePixelRatio());
            QCOMPARE(icon.actualSize(kSize, mode), file.actualSize(kSize, mode));
        }
    }

    void disabledIconIsFaintAndKeepsItsShape_data()
    {
        QTest::addColumn<double>("devicePixelRatio");
        for (const double ratio : {1.0, 1.5, 2.0})
            QTest::addRow("%g", ratio) << ratio;
    }

    void disabledIconIsFaintAndKeepsItsShape()
    {
        QFETCH(const double, devicePixelRatio);
        const QIcon icon = icons::named(QStringLiteral("delete"));
        const QImage enabled = render(icon, QIcon::Normal, devicePixelRatio);
        const QImage disabled = render(icon, QIcon::Disabled, devicePixelRatio);
        QCOMPARE(disabled.size(), enabled.size());
        QVERIFY(contrast(disabled) <= contrast(enabled) / 2);
        QCOMPARE(contrast(disabled) > contrast(enabled) / 3, contrast(enabled) > 0);
        for (int y = 0; y < enabled.height(); ++y) {
            for (int x = 0; x < enabled.width(); ++x) {
                const int expected = qAlpha(enabled.pixel(x, y)) * 46 / 100;
                QVERIFY(qAbs(qAlpha(disabled.pixel(x, y)) - expected) <= 1);
            }
        }
    }

    void paintedDisabledIconIsAsFaint()
    {
        const QIcon icon = icons::named(QStringLiteral("delete"));
        QImage painted(kSize, QImage::Format_ARGB32);
        painted.fill(Qt::transparent);
        QPainter painter(&painted);
        painter.setOpacity(1.0);
        icon.paint(&painter, painted.rect(), Qt::AlignCenter, QIcon::Disabled);
        QCOMPARE(painter.opacity(), 1.0);
        painter.end();
        QVERIFY(qAbs(contrast(painted) - contrast(render(icon, QIcon::Disabled))) <= 2);
    }

    void disabledButtonShowsItsIconFaintAlsoUnderThePointer()
    {
        QPushButton button;
        new HoverIcons(&button, QStringLiteral("delete"));
        const QImage normal = render(button.icon(), QIcon::Normal);
        hover(button, true);
        const QImage light = render(button.icon(), QIcon::Normal);
        QCOMPARE(contrast(light) > contrast(normal), contrast(normal) > 0);
        button.setEnabled(false);
        QCOMPARE(render(button.icon(), QIcon::Normal), normal);
        hover(button, false);
        hover(button, true);
        QCOMPARE(render(button.icon(), QIcon::Normal), normal);
        button.setEnabled(true);
        QCOMPARE(render(button.icon(), QIcon::Normal), light);
        hover(button, false);
        QCOMPARE(render(button.icon(), QIcon::Normal), normal);
    }
};

REGISTER_TEST(testrun::gui<TestIcons>);

#include "test_icons.moc"
