// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/programundertest.h"
#include "tests/win32/winedesktop.h"

/// The Windows program under Wine, on a WineDesktop, in a profile of its own: the user's folders lie below profile(),
/// and the registry has only what the test stores.
class Win32Program : public ProgramUnderTest
{
public:
    /// @param profileName a folder below profile() in which the user's folders are made; empty: profile() itself.
    explicit Win32Program(const QString& profileName = {});
    ~Win32Program() override;

    /// The engine's own message does not go to the log file; this one follows it.
    QString startMessage() const override { return QStringLiteral("Recording started..."); }
    QDir dataFolder() const override;
    /// The folder where the user's folders lie.
    QDir userFolder() const { return QDir(profile().filePath(m_profileName)); }

    /// What the registry has of the program now, by keys ("hotkeys/recording").
    static QMap<QString, QString> storedSettings();

    /// The main window as Windows knows it.
    static std::optional<WindowsWindow> mainWindowAsWindowsKnowsIt(bool minimised, int timeoutMs);

    /// Asks the program to close its main window.
    void askToEnd() override;

protected:
    bool writeSettings() override;
    QStringList command() const override;
    QProcessEnvironment environment() override;
    QList<x11clients::Window> windows() override;
    void readMessages() override;

private:
    void keepLine(const QString& line);

    QString m_profileName;
    /// What libobs says on the standard output.
    QByteArray m_printed;
    /// How much of the log file is read.
    qint64 m_readBytes = 0;
};

/// The test pattern on the Windows desktop, and the test tone at the microphone, for as long as the object lives:
/// Wine's sound driver lets nobody record what a speaker plays.
class WindowsPerformance
{
public:
    /// Shows and plays. Empty on success, else what went wrong.
    QString begin(int numbersPerSecond);
    ~WindowsPerformance();

private:
    QProcess m_patternProcess;
    QProcess m_tone;
};
