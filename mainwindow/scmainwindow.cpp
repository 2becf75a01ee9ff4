#include "mainwindow/scmainwindow.h"

#include <QDebug>
#include <QGuiApplication>
#include <QTimer>

#include <utility>

namespace {

constexpr int kRecordingClockIntervalMs = 1000;

} // namespace

SCMainWindow::SCMainWindow() = default;

SCMainWindow::~SCMainWindow() = default;

void SCMainWindow::setTranslator(std::shared_ptr<SCTranslator> translator)
{
    m_translator = std::move(translator);
}

void SCMainWindow::initializeCapture()
{
    m_recordingClock = new QTimer(this);
    m_recordingClock->setInterval(kRecordingClockIntervalMs);
    if (QGuiApplication::primaryScreen() == nullptr)
        qWarning() << "Failed to get primary screen";
}
