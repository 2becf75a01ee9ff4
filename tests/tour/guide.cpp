// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/tour/guide.h"

#include <QApplication>
#include <QComboBox>
#include <QTimer>
#include <QWindow>

#include <utility>

namespace tour {

void whenShown(QWidget* (*window)(), std::function<void(QWidget&)> call)
{
    constexpr int kPollMs = 10;
    auto* const timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, window, call = std::move(call)] {
        QWidget* const found = window();
        if (found == nullptr || found->windowHandle() == nullptr || !found->windowHandle()->isExposed())
            return;
        timer->stop();
        timer->deleteLater();
        call(*found);
    });
    timer->start(kPollMs);
}

void lookAtBox(const Look& look, const QByteArray& name, QWidget& box)
{
    look({name, box.frameGeometry(), {&box}});
    box.close();
}

void stopAtBox(const Look& look, const QByteArray& name, const std::function<void()>& show)
{
    bool isOver = false;
    whenShown(&QApplication::activeModalWidget, [&](QWidget& box) {
        lookAtBox(look, name, box);
        isOver = true;
    });
    show();
    if (!isOver)
        qFatal("There is no box to look at: %s", name.constData());
}

void stopAtList(const Look& look, const QByteArray& name, QWidget& window, const char* box)
{
    child<QComboBox>(window, box).showPopup();
    QWidget* const list = QApplication::activePopupWidget();
    waitFor(*list);
    look({name, window.frameGeometry() | list->geometry(), {&window, list}});
    list->close();
}

void everything(const Look& look)
{
    mainWindow(look);
    files(look);
    dialogs(look);
    messages(look);
    overlays(look);
    screenshotFrame(look);
}

} // namespace tour
