// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/messagebox.h"

#include "widgets/boxtitlebar.h"
#include "widgets/shownname.h"
#include "widgets/stylesheet.h"

#include <QApplication>
#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QPushButton>

namespace messagebox {

namespace {

/// In logical pixels: a line of any of the program's languages.
constexpr int kLineHeightPx = 20;

/// Null where boxes are shown.
Recorder* s_recorder = nullptr;

/// Desktops have their own texts, in their own language.
void nameButton(const QMessageBox& box, QMessageBox::StandardButton which, const char* text)
{
    if (QAbstractButton* const button = box.button(which))
        button->setText(QCoreApplication::translate("QMessageBox", text));
}

QLabel& textOf(const QMessageBox& box)
{
    return *box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
}

/// The box goes by the widths of its content and of the system's title bars.
void widenFor(const BoxTitleBar& titleBar, const QMessageBox& box)
{
    QLabel& text = textOf(box);
    const int neededPx = titleBar.sizeHint().width();
    // Else it would do instead of the width that the text needs.
    if (text.minimumSizeHint().width() < neededPx)
        text.setMinimumWidth(neededPx);
}

void prepare(QMessageBox& box)
{
    // Names of devices and files may look like markup, and like other names.
    box.setTextFormat(Qt::PlainText);
    box.setText(shownName(box.text()));
    // Some desktops have icons for them.
    const QList<QAbstractButton*> buttons = box.buttons();
    for (QAbstractButton* const button : buttons)
        button->setIcon({});
    nameButton(box, QMessageBox::Ok, "OK");
    nameButton(box, QMessageBox::Cancel, "Cancel");
    applyStyleSheet(box, QStringLiteral(":/res/style/message-box.qss"));
    widenFor(*new BoxTitleBar(box), box);
}

/// The box goes by its own font's line height; letters from a fallback font may need more.
void reserveLine(const QMessageBox& box)
{
    textOf(box).setMinimumHeight(kLineHeightPx);
}

Answer showQuestion(const Question& question)
{
    QMessageBox box(QMessageBox::Question, question.title, question.text, QMessageBox::Cancel, question.parent);
    auto* const check = new QCheckBox(question.checkText);
    box.setCheckBox(check);
    QPushButton* const yes = box.addButton(question.buttonText, QMessageBox::ActionRole);
    yes->setObjectName(question.buttonName);
    box.setDefaultButton(QMessageBox::Cancel);
    box.setEscapeButton(QMessageBox::Cancel);
    prepare(box);
    reserveLine(box);
    box.exec();
    return {box.clickedButton() == yes, check->isChecked()};
}

void addActions(QMessageBox& box, const QList<Action>& actions)
{
    for (const Action& action : actions)
        QObject::connect(box.addButton(action.text, QMessageBox::ActionRole), &QPushButton::clicked, &box, action.run);
    box.setDefaultButton(QMessageBox::Ok);
    // Which one it is does not go without saying where there are others.
    box.setEscapeButton(QMessageBox::Ok);
}

/// Closes a box, whose child it is, when its window is minimised or hidden.
class BoxOfWindow : public QObject
{
public:
    BoxOfWindow(QMessageBox& box, QWidget& window) : QObject(&box), m_box(box) { window.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const bool isMinimised =
            event->type() == QEvent::WindowStateChange && static_cast<QWidget*>(watched)->isMinimized();
        if (isMinimised || event->type() == QEvent::Hide)
            m_box.close();
        return false;
    }

private:
    QMessageBox& m_box;
};

void showOrRecord(const Call& call)
{
    if (s_recorder != nullptr) {
        s_recorder->note(call);
        return;
    }
    QMessageBox box(call.kind, call.title, call.text, QMessageBox::Ok, call.parent);
    prepare(box);
    box.exec();
}

} // namespace

void informBeside(QWidget& window, const QString& title, const QString& text, const QList<Action>& actions)
{
    if (s_recorder != nullptr) {
        s_recorder->note({Kind::Information, &window, title, text, actions});
        return;
    }
    // A window that a dialog blocks has its boxes blocked as well.
    QWidget* const modal = QApplication::activeModalWidget();
    QWidget& owner = modal != nullptr ? *modal : window;
    auto* const box = new QMessageBox(Kind::Information, title, text, QMessageBox::Ok, &owner);
    addActions(*box, actions);
    prepare(*box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setModal(false);
    new BoxOfWindow(*box, owner);
    box->show();
    // The window may be about to get the keyboard.
    box->activateWindow();
}

void information(QWidget* parent, const QString& title, const QString& text)
{
    showOrRecord({Kind::Information, parent, title, text});
}

void warning(QWidget* parent, const QString& title, const QString& text)
{
    showOrRecord({Kind::Warning, parent, title, text});
}

void critical(QWidget* parent, const QString& title, const QString& text)
{
    showOrRecord({Kind::Critical, parent, title, text});
}

Answer ask(const Question& question)
{
    return s_recorder != nullptr ? s_recorder->answer(question) : showQuestion(question);
}

Answer Recorder::answer(const Question& question)
{
    m_questions.push_back(question);
    return m_answer;
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
