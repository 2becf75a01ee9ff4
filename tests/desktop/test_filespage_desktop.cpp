// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sctranslator.h"
#include "app/settings.h"
#include "files/fileitemdelegate.h"
#include "mainwindow/scmainwindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/desktop/userinput.h"
#include "tests/support/addresses.h"
#include "tests/support/filelibrary.h"
#include "tests/support/windowtest.h"

#include <QApplication>
#include <QCheckBox>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <QToolTip>

#include <functional>
#include <memory>

using FileItemDelegate = SCFileManager::FileItemDelegate;
using desktopuser::click;
using desktopuser::colourAt;
using desktopuser::onScreen;
using desktopuser::pointTo;
using desktopuser::press;
using userinput::xdotool;

namespace {

constexpr QPoint kWindowPosition(20, 40);
constexpr QRgb kPlain = qRgb(0x28, 0x28, 0x2e);
constexpr QRgb kRaised = qRgb(0x37, 0x37, 0x3d);

/// What a user does to a box of the program.
using Answer = std::function<void(QMessageBox&)>;

void pressButton(QMessageBox& box, const char* name)
{
    click(*box.findChild<QPushButton*>(QLatin1String(name)));
}

void pressDelete(QMessageBox& box)
{
    pressButton(box, "deleteButton");
}

void checkAndPressDelete(QMessageBox& box)
{
    click(*box.checkBox());
    QVERIFY(box.checkBox()->isChecked());
    pressDelete(box);
}

void pressEscape(QMessageBox& /*box*/)
{
    press(QStringLiteral("Escape"));
}

void closeByTheWindowManager(QMessageBox& /*box*/)
{
    press(QStringLiteral("alt+F4"));
}

} // namespace

/// The page of the files, worked with the pointer.
class TestFilesPageDesktop : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        windowtest::resetSettings();
        m_produced = std::make_unique<ProducedFiles>();
        QJsonArray list;
        for (const auto& [name, type] : {std::pair{"new.mp4", "video"},
                                         {"song.mp3", "audio"},
                                         {"shot.png", "screenshot"},
                                         {"old.mp4", "video"},
                                         {"sound.aac", "audio"}})
            list.append(QJsonObject{{"filepath", m_produced->add(QLatin1String(name))},
                                    {"properties", QJsonObject{{"type", QLatin1String(type)}}}});
        filelibrary::write(QJsonDocument(list).toJson());
        pointTo(onScreen({3, 3}));
        m_window = std::make_unique<SCMainWindow>();
        m_window->move(onScreen(kWindowPosition));
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        desktopuser::waitUntilStill();
        click(*button("filesTab"));
        QTRY_VERIFY(view()->isVisible());
        m_boxes = 0;
    }

    void cleanup()
    {
        m_window.reset();
        m_produced.reset();
        LibraryRefuge::clear();
    }

    void pageOpensWithTheNewestFileSelected()
    {
        QCOMPARE(names(), QStringList({"new.mp4", "song.mp3", "shot.png", "old.mp4", "sound.aac"}));
        QCOMPARE(selectedNames(), QStringList{"new.mp4"});
        QTRY_COMPARE(QColor(colourAt(leftOf(0))), QColor(kRaised));
        QCOMPARE(QColor(colourAt(leftOf(1))), QColor(kPlain));
    }

    void listIsWorkedWithTheKeysOfTheFilters()
    {
        const OpenedAddresses opener({"file"});
        // From the page's tab, which the click has left the keyboard at.
        for (int step = 0; step < 20 && !button("allFilter")->hasFocus(); ++step) {
            const QWidget* const before = QApplication::focusWidget();
            press(QStringLiteral("Tab"));
            QTRY_VERIFY(QApplication::focusWidget() != before);
        }
        QVERIFY(button("allFilter")->hasFocus());
        press(QStringLiteral("Down"));
        QTRY_COMPARE(selectedNames(), QStringList{"song.mp3"});
        QTRY_COMPARE(QColor(colourAt(leftOf(1))), QColor(kRaised));
        press(QStringLiteral("shift+Down"));
        QTRY_COMPARE(selectedNames(), QStringList({"song.mp3", "shot.png"}));
        press(QStringLiteral("Return"));
        QTRY_COMPARE(opener.files(), QStringList{pathAt(2)});
        answerNextBox(QStringLiteral("Do you want to delete 2 files?"), pressDelete);
        press(QStringLiteral("Delete"));
        QTRY_COMPARE(names(), QStringList({"new.mp4", "old.mp4", "sound.aac"}));
        QTRY_COMPARE(selectedNames(), QStringList{"old.mp4"});
        QTRY_VERIFY(button("allFilter")->hasFocus());
        press(QStringLiteral("Up"));
        QTRY_COMPARE(selectedNames(), QStringList{"new.mp4"});
    }

    void rowsAreSelectedOneByOneInARowAndTogether()
    {
        click(textOf(2));
        QTRY_COMPARE(selectedNames(), QStringList{"shot.png"});
        clickWith("ctrl", textOf(4));
        QTRY_COMPARE(selectedNames(), QStringList({"shot.png", "sound.aac"}));
        clickWith("ctrl", textOf(2));
        QTRY_COMPARE(selectedNames(), QStringList{"sound.aac"});
        click(textOf(1));
        clickWith("shift", textOf(3));
        QTRY_COMPARE(selectedNames(), QStringList({"song.mp3", "shot.png", "old.mp4"}));
        // Below the last row.
        click(view()->viewport()->mapToGlobal(QPoint(60, 6 * FileItemDelegate::kHeight)));
        QTRY_VERIFY(selectedNames().isEmpty());
    }

    void onlyTheRowBelowThePointerShowsItsIcons()
    {
        QVERIFY(!showsIcons(0));
        pointTo(textOf(2));
        QTRY_COMPARE(QColor(colourAt(leftOf(2))), QColor(kRaised));
        QTRY_VERIFY(showsIcons(2));
        QVERIFY(!showsIcons(0));
        QVERIFY(!showsIcons(1));
        pointTo(textOf(0));
        QTRY_VERIFY(showsIcons(0));
        QVERIFY(!showsIcons(2));
        QCOMPARE(QColor(colourAt(leftOf(2))), QColor(kPlain));
        pointTo(onScreen({3, 3}));
        QTRY_VERIFY(!showsIcons(0));
        QCOMPARE(QColor(colourAt(leftOf(0))), QColor(kRaised));
    }

    void buttonThatCanDoNothingIsDim()
    {
        QPushButton* const remove = button("deleteFilesButton");
        const int bright = desktopuser::brightestOf(*remove);
        // Below the last row.
        click(view()->viewport()->mapToGlobal(QPoint(60, 6 * FileItemDelegate::kHeight)));
        QTRY_VERIFY(!remove->isEnabled());
        QTRY_VERIFY(desktopuser::brightestOf(*remove) < bright * 3 / 4);
        const int dim = desktopuser::brightestOf(*remove);
        pointTo(desktopuser::centreOf(*remove));
        QTest::qWait(200);
        QCOMPARE(desktopuser::brightestOf(*remove), dim);
        click(textOf(1));
        pointTo(onScreen({3, 3}));
        QTRY_COMPARE(desktopuser::brightestOf(*remove), bright);
    }

    void iconsSayWhatTheyDoUnderAStillPointer()
    {
        pointTo(folderIconOf(1));
        QTRY_COMPARE(QToolTip::text(), QStringLiteral("Show in Folder"));
        pointTo(deleteIconOf(1));
        QTRY_COMPARE(QToolTip::text(), QStringLiteral("Delete"));
        pointTo(textOf(1));
        QTRY_VERIFY(!QToolTip::isVisible());
    }

    void doubleClickOpensTheFile()
    {
        const OpenedAddresses files({"file"});
        pointTo(textOf(3));
        QTest::qWait(50);
        xdotool({"click", "--repeat", "2", "--delay", "60", "1"});
        QTRY_COMPARE(files.opened(), QList<QUrl>{QUrl::fromLocalFile(pathAt(3))});
        QTest::qWait(100);
        QCOMPARE(files.opened().size(), 1);
    }

    /// Nothing on this desktop answers for the file manager, so it is the folder that is opened.
    void folderIconShowsTheFileAndSelectsNothing()
    {
        const OpenedAddresses files({"file"});
        click(folderIconOf(3));
        QTRY_COMPARE(files.opened(), QList<QUrl>{QUrl::fromLocalFile(m_produced->folder())});
        QCOMPARE(selectedNames(), QStringList{"new.mp4"});
    }

    void deleteIconAsksAndWhateverIsNotYesDeletesNothing_data()
    {
        QTest::addColumn<Answer>("answer");
        QTest::newRow("Escape") << Answer(pressEscape);
        QTest::newRow("closed") << Answer(closeByTheWindowManager);
    }

    void deleteIconAsksAndWhateverIsNotYesDeletesNothing()
    {
        QFETCH(const Answer, answer);
        const QString path = pathAt(1);
        answerNextBox(QStringLiteral("Do you want to delete this file?"), answer);
        click(deleteIconOf(1));
        QTRY_COMPARE(m_boxes, 1);
        QCOMPARE(names().size(), 5);
        QVERIFY(filelibrary::paths().contains(path));
        QVERIFY(QFileInfo::exists(path));
        QCOMPARE(selectedNames(), QStringList{"new.mp4"});
    }

    void deleteIconTakesTheFileOutOfTheListAlone()
    {
        const QString path = pathAt(1);
        answerNextBox(QStringLiteral("Do you want to delete this file?"), pressDelete);
        click(deleteIconOf(1));
        QTRY_COMPARE(names(), QStringList({"new.mp4", "shot.png", "old.mp4", "sound.aac"}));
        QVERIFY(!filelibrary::paths().contains(path));
        QVERIFY(QFileInfo::exists(path));
        QCOMPARE(button("allFilter")->text(), QStringLiteral("All (4)"));
    }

    void deleteIconDeletesTheFileFromDisk()
    {
        const QString path = pathAt(1);
        answerNextBox(QStringLiteral("Do you want to delete this file?"), checkAndPressDelete);
        click(deleteIconOf(1));
        QTRY_COMPARE(names().size(), 4);
        QVERIFY(!filelibrary::paths().contains(path));
        QVERIFY(!QFileInfo::exists(path));
    }

    void selectedFilesAreDeletedTogether()
    {
        const QStringList paths{pathAt(0), pathAt(2), pathAt(4)};
        clickWith("ctrl", textOf(2));
        clickWith("ctrl", textOf(4));
        QTRY_COMPARE(selectedNames().size(), 3);
        answerNextBox(QStringLiteral("Do you want to delete 3 files?"), pressDelete);
        click(*button("deleteFilesButton"));
        QTRY_COMPARE(m_boxes, 1);
        QTRY_COMPARE(names().size(), 2);
        for (const QString& path : paths) {
            QVERIFY(!filelibrary::paths().contains(path));
            QVERIFY(QFileInfo::exists(path));
        }
    }

    void deletingUnderAFilterStaysThere()
    {
        click(*button("audioFilter"));
        QTRY_COMPARE(names(), QStringList({"song.mp3", "sound.aac"}));
        click(textOf(0));
        answerNextBox(QStringLiteral("Do you want to delete 1 files?"), pressDelete);
        click(*button("deleteFilesButton"));
        QTRY_COMPARE(names(), QStringList{"sound.aac"});
        QCOMPARE(view()->property("currentFilter"), QVariant("audio"));
    }

    void orderIsReversedAndBack()
    {
        const QStringList before = filelibrary::paths();
        click(*button("reverseFilesButton"));
        QTRY_COMPARE(names(), QStringList({"sound.aac", "old.mp4", "shot.png", "song.mp3", "new.mp4"}));
        QCOMPARE(filelibrary::paths().first(), before.last());
        click(*button("reverseFilesButton"));
        QTRY_COMPARE(filelibrary::paths(), before);
    }

private:
    QPushButton* button(const char* name) const { return m_window->findChild<QPushButton*>(QLatin1String(name)); }
    QListView* view() const { return m_window->findChild<QListView*>(QStringLiteral("fileView")); }
    QModelIndex index(int row) const { return view()->model()->index(row, 0); }
    QRect rect(int row) const { return view()->visualRect(index(row)); }
    QString pathAt(int row) const { return index(row).data(Qt::UserRole + 1).toString(); }

    QPoint global(const QPoint& inList) const { return view()->viewport()->mapToGlobal(inList); }
    QPoint textOf(int row) const { return global(QPoint(60, rect(row).center().y())); }
    /// Left of the text.
    QPoint leftOf(int row) const { return global(QPoint(4, rect(row).center().y())); }
    QPoint folderIconOf(int row) const { return global(FileItemDelegate::folderRect(rect(row)).center()); }
    QPoint deleteIconOf(int row) const { return global(FileItemDelegate::deleteRect(rect(row)).center()); }

    QStringList names() const
    {
        QStringList names;
        for (int row = 0; row < view()->model()->rowCount(); ++row)
            names.append(index(row).data().toString());
        return names;
    }

    /// In the list's order.
    QStringList selectedNames() const
    {
        QStringList names;
        for (int row = 0; row < view()->model()->rowCount(); ++row) {
            if (view()->selectionModel()->isSelected(index(row)))
                names.append(index(row).data().toString());
        }
        return names;
    }

    /// Whether the screen has something lighter than a row where both of its icons are.
    bool showsIcons(int row) const
    {
        const QImage image = desktopuser::screenshot();
        const QPoint origin = QGuiApplication::primaryScreen()->geometry().topLeft();
        for (const QRect& icon : {FileItemDelegate::folderRect(rect(row)), FileItemDelegate::deleteRect(rect(row))}) {
            const QRect position(((QPointF(global(icon.topLeft()) - origin)) * desktopuser::scale()).toPoint(),
                                 icon.size() * desktopuser::scale());
            bool found = false;
            for (int y = position.top(); y <= position.bottom(); ++y) {
                for (int x = position.left(); x <= position.right(); ++x)
                    found = found || qGray(image.pixel(x, y)) > 100;
            }
            if (!found)
                return false;
        }
        return true;
    }

    static void clickWith(const char* key, const QPoint& position)
    {
        xdotool({"keydown", QLatin1String(key)});
        click(position);
        xdotool({"keyup", QLatin1String(key)});
    }

    /// Once a box is there, it has to say that, and is answered.
    void answerNextBox(const QString& text, const Answer& answer)
    {
        auto* const timer = new QTimer(m_window.get());
        connect(timer, &QTimer::timeout, m_window.get(), [this, timer, text, answer] {
            auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr)
                return;
            timer->stop();
            // However it ends, the test goes on.
            QTimer::singleShot(5000, box, &QDialog::reject);
            QVERIFY(QTest::qWaitForWindowActive(box));
            desktopuser::waitUntilStill();
            QCOMPARE(box->text(), text);
            answer(*box);
            ++m_boxes;
        });
        timer->start(50);
    }

    std::unique_ptr<ProducedFiles> m_produced;
    std::unique_ptr<SCMainWindow> m_window;
    int m_boxes = 0;
};

REGISTER_TEST(windowtest::run<TestFilesPageDesktop>);

#include "test_filespage_desktop.moc"
