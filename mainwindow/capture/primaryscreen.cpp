#include "mainwindow/capture/primaryscreen.h"

#include <QGuiApplication>
#include <QScreen>

CaptureScreen primaryScreen()
{
    const QScreen* const screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? CaptureScreen{screen->geometry(), screen->devicePixelRatio()} : CaptureScreen{};
}
