// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/scsettingswindow.h"
#include "mainwindow/recording/scfullscreentoolbar.h"
#include "mainwindow/scmainwindow.h"
#include "mainwindow/tile.h"
#include "overlays/drawwindow.h"
#include "overlays/scswitchwidget.h"
#include "screenshot/scscreenshot.h"
#include "screenshot/scscreenshotwindow.h"
#include "tests/desktop/accessibletree.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/textcontrast.h"
#include "tests/support/messagebus.h"
#include "tests/support/windowtest.h"
#include "tests/tour/tour.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPixmap>
#include <QPushButton>
#include <QSet>
#include <QSettings>
#include <QTest>

using desktopuser::press;

namespace {

using State = AccessibleObject::State;

/// Roles of what somebody works with.
bool isControl(const AccessibleObject& object)
{
    static const QSet<QString> roles{
        "push button", "toggle button", "check box", "radio button", "combo box",       "text",
        "list",        "list item",     "menu item", "link",         "check menu item", "progress bar"};
    return object.is(State::Focusable) || roles.contains(object.role);
}

/// What is missing for somebody who does not see the control, or has no mouse.
QStringList faultsOf(const AccessibleObject& control)
{
    // What Qt has for widgets that say nothing.
    static const QSet<QString> nothing{"", "filler", "panel", "unknown", "invalid"};
    static const QSet<QString> pressed{"push button", "toggle button", "check box", "radio button", "combo box"};
    QStringList faults;
    if (control.name.trimmed().isEmpty())
        faults << QStringLiteral("has no name");
    if (nothing.contains(control.role))
        faults << QStringLiteral("has no role");
    if (pressed.contains(control.role) && control.is(State::Enabled) && !control.is(State::Focusable))
        faults << QStringLiteral("cannot have the keyboard");
    return faults;
}

QStringList faultsBelow(const AccessibleObject& root)
{
    QStringList faults;
    visitAccessible(root, [&faults](const AccessibleObject& object) {
        if (!object.is(State::Showing) || !isControl(object))
            return;
        for (const QString& fault : faultsOf(object))
            faults << QStringLiteral("%1 \"%2\" %3").arg(object.role, object.name, fault);
    });
    return faults;
}

/// The first object that is shown with this role and name.
AccessibleObject find(const AccessibleObject& root, const QString& role, const QString& name)
{
    AccessibleObject found;
    visitAccessible(root, [&](const AccessibleObject& object) {
        if (found.role.isEmpty() && object.is(State::Showing) && object.role == role && object.name == name)
            found = object;
    });
    return found;
}

/// Whether somebody works with a widget of this class.
bool isWorkedWith(const QWidget& widget)
{
    return qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
           qobject_cast<const QComboBox*>(&widget) != nullptr || qobject_cast<const QLineEdit*>(&widget) != nullptr ||
           qobject_cast<const QAbstractItemView*>(&widget) != nullptr ||
           qobject_cast<const Tile*>(&widget) != nullptr || qobject_cast<const SCSwitchWidget*>(&widget) != nullptr;
}

/// That exclude one another; empty for a button that excludes none.
QList<QAbstractButton*> alternatives(const QAbstractButton& button)
{
    if (button.group() != nullptr)
        return button.group()->exclusive() ? button.group()->buttons() : QList<QAbstractButton*>();
    QList<QAbstractButton*> found;
    if (button.autoExclusive())
        found = button.parentWidget()->findChildren<QAbstractButton*>(QString(), Qt::FindDirectChildrenOnly);
    found.removeIf([](const QAbstractButton* other) { return !other->autoExclusive(); });
    return found;
}

/// Of alternatives Tab leads to one, and the arrow keys to the others: the first one's name.
QString nameOf(const QWidget* widget)
{
    const auto* const button = qobject_cast<const QAbstractButton*>(widget);
    const QList<QAbstractButton*> all = button == nullptr ? QList<QAbstractButton*>() : alternatives(*button);
    if (!all.isEmpty())
        return all.constFirst()->objectName();
    return widget == nullptr ? QString() : widget->objectName();
}

QStringList sorted(const QSet<QString>& names)
{
    QStringList list(names.cbegin(), names.cend());
    list.sort();
    return list;
}

QStringList controlsOf(const QWidget& window)
{
    QSet<QString> names;
    const QList<QWidget*> widgets = window.findChildren<QWidget*>();
    for (const QWidget* const widget : widgets) {
        const bool isQtsOwn = widget->objectName().startsWith(QLatin1String("qt_"));
        if (!isQtsOwn && widget->isVisible() && widget->isEnabled() && isWorkedWith(*widget))
            names << nameOf(widget);
    }
    return sorted(names);
}

/// The controls that the Tab key leads to, until it is where it was.
QStringList reachedByTab()
{
    constexpr int kMostSteps = 60;
    QSet<QString> names;
    QString first;
    for (int step = 0; step < kMostSteps; ++step) {
        press(QStringLiteral("Tab"));
        const QString name = nameOf(QApplication::focusWidget());
        if (name == first)
            break;
        if (first.isEmpty())
            first = name;
        names << name;
    }
    return sorted(names);
}

} // namespace

/// The program for who does not see it, sees little, or has no mouse.
class TestAccessibility : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        windowtest::resetSettings();
        QVERIFY2(m_reader.isConnected(), "no at-spi2-core?");
    }

    void everyControlHasNameRoleAndState()
    {
        QStringList faults;
        int controls = 0;
        tour::everything([&](const tour::Stop& stop) {
            const AccessibleObject all = m_reader.read();
            visitAccessible(all,
                            [&controls](const AccessibleObject& object) { controls += isControl(object) ? 1 : 0; });
            for (const QString& fault : faultsBelow(all))
                faults << QStringLiteral("%1: %2").arg(QLatin1String(stop.name), fault);
        });
        report(faults);
        QVERIFY2(controls > 400, qPrintable(QString::number(controls)));
    }

    void stateOfAControlIsThatOfTheWindow()
    {
        SCMainWindow window;
        show(window);
        auto* const speaker = window.findChild<SCSwitchWidget*>(QStringLiteral("speakerSwitch"));
        for (const bool on : {true, false}) {
            speaker->setChecked(on);
            const auto seen = find(m_reader.read(), QStringLiteral("check box"), QStringLiteral("Speaker"));
            QVERIFY(seen.is(State::Enabled));
            QCOMPARE(seen.is(State::Checked), on);
        }
        speaker->setFocus();
        QVERIFY(find(m_reader.read(), QStringLiteral("check box"), QStringLiteral("Speaker")).is(State::Focused));
        speaker->setEnabled(false);
        QVERIFY(!find(m_reader.read(), QStringLiteral("check box"), QStringLiteral("Speaker")).is(State::Enabled));
        const auto tile = find(m_reader.read(), QStringLiteral("radio button"), QStringLiteral("Full Screen"));
        QVERIFY(tile.is(State::Checked));
    }

    void faultsAreFound()
    {
        QWidget window;
        QPushButton button(&window);
        QPushButton forTheMouse(QStringLiteral("Mouse"), &window);
        forTheMouse.setFocusPolicy(Qt::NoFocus);
        QPushButton disabled(QStringLiteral("Disabled"), &window);
        disabled.setFocusPolicy(Qt::NoFocus);
        disabled.setEnabled(false);
        QWidget field(&window);
        field.setFocusPolicy(Qt::StrongFocus);
        show(window);
        QStringList faults = faultsBelow(m_reader.read());
        faults.sort();
        QCOMPARE(faults,
                 (QStringList{"filler \"\" has no name", "filler \"\" has no role", "push button \"\" has no name",
                              "push button \"Mouse\" cannot have the keyboard"}));
    }

    void tabLeadsToEveryControl_data()
    {
        QTest::addColumn<QString>("tab");
        for (const char* tab : {"recordingTab", "screenshotTab", "filesTab"})
            QTest::newRow(tab) << tab;
    }

    void tabLeadsToEveryControl()
    {
        QFETCH(const QString, tab);
        SCMainWindow window;
        show(window);
        window.findChild<QPushButton*>(tab)->click();
        QCOMPARE(reachedByTab(), controlsOf(window));
    }

    void tabLeadsToEveryControlOfTheSettings_data()
    {
        QTest::addColumn<QString>("tab");
        for (const char* page : {"recording", "screenshot", "hotkeys", "mouse"})
            QTest::newRow(page) << page + QStringLiteral("SettingsTab");
    }

    void tabLeadsToEveryControlOfTheSettings()
    {
        QFETCH(const QString, tab);
        SCMainWindow main;
        show(main);
        auto* const window = new SCSettingsWindow(&main);
        dialogwindow::showOver(*window, main);
        QVERIFY(QTest::qWaitForWindowActive(window));
        window->findChild<QPushButton*>(tab)->click();
        QCOMPARE(reachedByTab(), controlsOf(*window));
        window->close();
    }

    void tabLeadsToEveryButtonOverTheDesktop()
    {
        DrawWindow frame;
        frame.setGeometry(100, 100, 600, 300);
        frame.show();
        frame.offerFollowing(true);
        expectAllReached(frame, barOf("drawToggleButton"));
        frame.hide();

        SCScreenshot screenshot;
        SCScreenshotWindow shot(&screenshot);
        shot.setGeometry(100, 100, 600, 300);
        shot.setRecordable(true);
        shot.show();
        expectAllReached(shot, barOf("saveButton"));
        shot.hide();

        SCFullscreenToolbar bar;
        bar.move(200, 60);
        bar.show();
        expectAllReached(bar, bar);
    }

    void arrowsLeadFromPageToPage()
    {
        SCMainWindow window;
        show(window);
        QVERIFY(desktopuser::tabTo(*window.findChild<QPushButton*>(QStringLiteral("recordingTab"))));
        for (const char* tab : {"screenshotTab", "filesTab"}) {
            press(QStringLiteral("Down"));
            QTRY_VERIFY(window.findChild<QPushButton*>(QLatin1String(tab))->isChecked());
        }
    }

    void textStandsOutFromItsBackground()
    {
        QStringList faults;
        int texts = 0;
        tour::everything([&](const tour::Stop& stop) {
            QStringList faint;
            // A window is shown before it is painted.
            const auto isClear = [&] { return (faint = faintTexts(stop, texts)).isEmpty(); };
            (void)QTest::qWaitFor(isClear);
            faults << faint;
        });
        report(faults);
        QVERIFY2(texts > 300, qPrintable(QString::number(texts)));
    }

    void faintTextIsFound()
    {
        QLabel label(QStringLiteral("Speicherort"));
        label.setStyleSheet(QStringLiteral("color: #99A1B0; background: #28282E;"));
        label.resize(200, 40);
        show(label);
        const auto contrast = [&label] {
            return textcontrast::textsOf(label, desktopuser::screenshot()).constFirst().contrast;
        };
        QTRY_VERIFY(contrast() > kLeastContrast);
        label.setStyleSheet(QStringLiteral("color: #5C626C; background: #28282E;"));
        QTRY_VERIFY(contrast() < 3.0);
        QVERIFY(contrast() > 2.0);
    }

    void textIsMeasuredWithoutItsIcon()
    {
        QPixmap icon(24, 24);
        icon.fill(Qt::white);
        QPushButton button(icon, QStringLiteral("Speicherort"));
        button.setIconSize(icon.size());
        button.setStyleSheet(QStringLiteral("color: #5C626C; background: #28282E; border: none;"));
        button.resize(200, 40);
        show(button);
        QTRY_VERIFY(desktopuser::colourAt(button.mapToGlobal(QPoint(3, 20))) == qRgb(0x28, 0x28, 0x2e));
        desktopuser::waitUntilStill();
        const auto texts = textcontrast::textsOf(button, desktopuser::screenshot());
        QCOMPARE(texts.size(), 1);
        QVERIFY2(texts.constFirst().contrast > 2.0 && texts.constFirst().contrast < 3.0,
                 qPrintable(QString::number(texts.constFirst().contrast)));
    }

    void faintEntriesAndRowsAreFound()
    {
        const auto faint = QStringLiteral("color: #5C626C; background: #28282E;");
        QListWidget list;
        list.addItems({QStringLiteral("Speicherort"), QStringLiteral("Ordner")});
        list.setStyleSheet(faint);
        QMenu menu;
        menu.addAction(QStringLiteral("Speicherort"));
        menu.setStyleSheet(QStringLiteral("QMenu::item { padding: 8px 24px; } QMenu { %1 }").arg(faint));
        show(list);
        expectFaint(list, 2);
        list.hide();
        menu.popup({100, 100});
        expectFaint(menu, 1);
        menu.close();
    }

private:
    static constexpr double kLeastContrast = 4.5;

    static void show(QWidget& window)
    {
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }

    static void expectFaint(const QWidget& window, qsizetype count)
    {
        const auto faint = [&window] {
            auto texts = textcontrast::textsOf(window, desktopuser::screenshot());
            texts.removeIf([](const textcontrast::Text& text) { return text.contrast < 2.0 || text.contrast > 3.0; });
            return texts.size();
        };
        QTRY_COMPARE(faint(), count);
    }

    /// The tool bar of a frame.
    static QWidget& barOf(const char* name)
    {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->findChild<QPushButton*>(QLatin1String(name)) != nullptr)
                return *window;
        }
        qFatal("There is no tool bar");
    }

    static void expectAllReached(KeyboardWindow& window, const QWidget& bar)
    {
        window.takeKeyboard();
        QTRY_VERIFY(window.hasKeyboard());
        const QStringList buttons = controlsOf(bar);
        QVERIFY(buttons.size() >= 3);
        QCOMPARE(reachedByTab(), buttons);
    }

    /// @param[out] texts grows by the number of those that were looked at
    static QStringList faintTexts(const tour::Stop& stop, int& texts)
    {
        const QImage screen = desktopuser::screenshot();
        QStringList faint;
        for (const QWidget* const window : stop.windows) {
            for (const textcontrast::Text& text : textcontrast::textsOf(*window, screen)) {
                ++texts;
                if (text.contrast < kLeastContrast)
                    faint << QStringLiteral("%1: %2 %3").arg(QLatin1String(stop.name), text.widget).arg(text.contrast);
            }
        }
        return faint;
    }

    /// All of them: a failure's own message would be cut off.
    static void report(const QStringList& faults)
    {
        for (const QString& fault : faults)
            qWarning().noquote() << fault;
        QCOMPARE(faults.size(), 0);
    }

    const ScreenReader m_reader;
};

/// The bus comes before the application.
static int run(int argc, char* argv[])
{
    const MessageBus bus;
    qputenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
    return windowtest::run<TestAccessibility>(argc, argv);
}

REGISTER_TEST(run);

#include "test_accessibility.moc"
