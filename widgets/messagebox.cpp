#include "widgets/messagebox.h"

#include "widgets/stylesheet.h"

#include <QMessageBox>
#include <QPushButton>

namespace messagebox {

namespace {

/// The one that notes at present; null where boxes are shown.
Recorder* s_recorder = nullptr;

QMessageBox::Icon iconOf(Kind kind)
{
    switch (kind) {
    case Kind::Warning:
        return QMessageBox::Warning;
    case Kind::Critical:
        return QMessageBox::Critical;
    case Kind::Information:
        break;
    }
    return QMessageBox::Information;
}

void show(const Call& call)
{
    QMessageBox box(iconOf(call.kind), call.title, call.text, QMessageBox::Ok, call.parent);
    // A device's or a file's name may look like markup.
    box.setTextFormat(Qt::PlainText);
    // Some desktops put a picture of their own on it.
    box.button(QMessageBox::Ok)->setIcon({});
    applyStyleSheet(box, QStringLiteral(":/res/style/message-box.qss"));
    box.exec();
}

void showOrNote(const Call& call)
{
    if (s_recorder != nullptr)
        s_recorder->note(call);
    else
        show(call);
}

} // namespace

void information(QWidget* parent, const QString& title, const QString& text)
{
    showOrNote({Kind::Information, parent, title, text});
}

void warning(QWidget* parent, const QString& title, const QString& text)
{
    showOrNote({Kind::Warning, parent, title, text});
}

void critical(QWidget* parent, const QString& title, const QString& text)
{
    showOrNote({Kind::Critical, parent, title, text});
}

Recorder::Recorder() : m_previous(s_recorder)
{
    s_recorder = this;
}

Recorder::~Recorder()
{
    s_recorder = m_previous;
}

} // namespace messagebox
