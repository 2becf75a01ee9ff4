#pragma once

#include <QMainWindow>

#include <memory>

class QTimer;
class SCTranslator;

/// The program's one top-level window.
class SCMainWindow : public QMainWindow
{
    Q_OBJECT

public:
    SCMainWindow();
    ~SCMainWindow() override;

    /// Shares the application's translator with the window, which reloads it when the user chooses another language.
    void setTranslator(std::shared_ptr<SCTranslator> translator);

    /// Starts the capture engine at the primary screen's size. Start-up calls it once, when the window has been
    /// painted, since the engine takes its time.
    void initializeCapture();

private:
    QTimer* m_recordingClock = nullptr;
    std::shared_ptr<SCTranslator> m_translator;
};
