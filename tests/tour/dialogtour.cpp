// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "dialogs/scupgradewindow.h"
#include "files/scfilemanager.h"
#include "mainwindow/scmainwindow.h"
#include "tests/tour/guide.h"
#include "widgets/messagebox.h"

#include <QCoreApplication>
#include <QCursor>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

namespace tour {

namespace {

QJsonObject releaseDocument(const char* version)
{
    return {{"win", QJsonObject{{"version", version},
                                {"size", "40MB"},
                                {"date", "2026.11.21"},
                                {"url", "https://www.kestrano.example/"},
                                {"change", QJsonArray{"Screenshots of a window, a region or the whole screen",
                                                      "A list of everything that was recorded, with filters",
                                                      "Settings in a window of their own"}}}}};
}

void dialog(const Look& look, const QByteArray& name, QMainWindow* window, const QWidget& below)
{
    dialogwindow::showOver(*window, below);
    stop(look, name, *window);
    window->close();
}

void failedUpdateCheck(const Look& look, const QWidget& below)
{
    auto* const window = new SCUpgradeWindow(nullptr, releaseDocument("1.0.0"));
    child<QLabel>(*window, "notCheckedLabel").show();
    child<QLabel>(*window, "currentVersionLabel").clear();
    dialog(look, "update-failed", window, below);
}

void settings(const Look& look, const QWidget& below)
{
    auto* const window = new SCSettingsWindow(nullptr);
    dialogwindow::showOver(*window, below);
    for (const char* page : {"recording", "screenshot", "hotkeys", "mouse"}) {
        choose(child<QPushButton>(*window, QByteArray(page) + "SettingsTab"));
        stop(look, "settings-" + QByteArray(page), *window);
    }
    choose(child<QPushButton>(*window, "hotkeysSettingsTab"));
    stopAtList(look, "settings-keys", *window, "recordingComboBox");
    window->close();
}

/// A message of the program's, by the class that shows it and its texts.
struct Message
{
    const char* name;
    void (*show)(QWidget*, const QString&, const QString&);
    const char* context;
    const char* title;
    const char* text;
    QStringList arguments;
};

QList<Message> programMessages()
{
    const auto list = QStringLiteral("/home/user/.local/share/Tolvaran/Kestrano/file_data.json");
    return {
        {"message-microphone", messagebox::warning, "SCMainWindow", "Warning", "No microphone device found!", {}},
        {"message-camera", messagebox::warning, "SCMainWindow", "Warning", "No camera device found!", {}},
        {"message-file-in-use",
         messagebox::information,
         "SCFileManager",
         "Delete",
         "The file that is being recorded cannot be deleted.",
         {}},
        {"message-file-being-saved",
         messagebox::information,
         "SCFileManager",
         "Delete",
         "The file is still being saved and cannot be deleted yet.",
         {}},
        {"message-list",
         messagebox::critical,
         "SCFileManager",
         "Error",
         "The list of files could not be saved: %1",
         {list}},
        {"message-hook",
         messagebox::critical,
         "WindowHighlighter",
         "Error",
         "Failed to install mouse hook (Error: %1)",
         {"1428"}},
    };
}

void show(const Message& message)
{
    const auto translated = [&](const char* text) { return QCoreApplication::translate(message.context, text); };
    QString text = translated(message.text);
    for (const QString& argument : message.arguments)
        text = text.arg(argument);
    message.show(nullptr, translated(message.title), text);
}

/// A shot that could not be saved; its message is made of two.
void showRefusedShot()
{
    const auto translated = [](const char* text) { return QCoreApplication::translate("SCScreenshot", text); };
    const QString reason =
        translated("Failed to save screenshot to") + QLatin1String(" /media/stick/Screenshot_2026-11-21_12-30-05.png");
    messagebox::warning(nullptr, translated("Screenshot Error"), translated("Screenshot error: %1").arg(reason));
}

void savedShot(const Look& look)
{
    const auto translated = [](const char* text) { return QCoreApplication::translate("SCMainWindow", text); };
    const auto shot = QStringLiteral("/home/user/Pictures/Kestrano/Screenshot_2026-11-21_12-30-05.png");
    QWidget window;
    window.setGeometry(100, 100, 832, 460);
    window.show();
    waitFor(window);
    messagebox::informBeside(window, translated("Screenshot Saved"), translated("Screenshot saved to: %1").arg(shot),
                             {{translated("Open"), [] {}}, {translated("Show in Folder"), [] {}}});
    auto& box = *window.findChild<QMessageBox*>();
    waitFor(box);
    lookAtBox(look, "message-saved", box);
}

/// A format that a newer release has stored.
void showUnknownFormat()
{
    const auto stored = openSettings();
    const QString before = stored->value(settingskeys::kRecordingFormat).toString();
    stored->setValue(settingskeys::kRecordingFormat, QStringLiteral("WEBM"));
    SCMainWindow window;
    window.show();
    child<QPushButton>(window, "settingsBtn").click();
    stored->setValue(settingskeys::kRecordingFormat, before);
}

} // namespace

void dialogs(const Look& look)
{
    // Nothing is to look as if the pointer were over it.
    QCursor::setPos(0, 0);
    QWidget below;
    below.setGeometry(100, 100, 832, 460);
    settings(look, below);
    dialog(look, "about", new SCAboutWindow(nullptr), below);
    // A document without a release leaves the page that waits.
    dialog(look, "update-waiting", new SCUpgradeWindow(nullptr, {{"mac", QJsonObject()}}), below);
    dialog(look, "update-none", new SCUpgradeWindow(nullptr, releaseDocument("1.0.0")), below);
    failedUpdateCheck(look, below);
    dialog(look, "update-found", new SCUpgradeWindow(nullptr, releaseDocument("1.1.0")), below);
}

void messages(const Look& look)
{
    for (const Message& message : programMessages())
        stopAtBox(look, message.name, [&] { show(message); });
    savedShot(look);
    stopAtBox(look, "message-refused", showRefusedShot);
    stopAtBox(look, "message-format", showUnknownFormat);
}

} // namespace tour
