// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QMessageBox>
#include <QPointer>
#include <QString>

#include <functional>
#include <vector>

/// Modal boxes; parent may be null, texts are translated. What shownName() replaces is shown so. User-interface thread.
namespace messagebox {

using Kind = QMessageBox::Icon;

void information(QWidget* parent, const QString& title, const QString& text);
void warning(QWidget* parent, const QString& title, const QString& text);
void critical(QWidget* parent, const QString& title, const QString& text);

/// A button of a box, which closes it.
struct Action
{
    QString text;
    std::function<void()> run;
};

/// Returns at once and blocks nothing. Over the dialog that blocks the window, if there is one. Goes when it is closed,
/// or the window that it is over is minimised, hidden or destroyed.
void informBeside(QWidget& window, const QString& title, const QString& text, const QList<Action>& actions = {});

struct Question
{
    QPointer<QWidget> parent;
    QString title;
    QString text;
    QString checkText;
    /// Of the button that confirms.
    QString buttonText;
    QString buttonName;
};

struct Answer
{
    bool confirmed = false;
    bool checked = false;
};

/// With an unchecked check box, a confirming button, and Cancel, which is the default.
Answer ask(const Question& question);

struct Call
{
    Kind kind;
    QPointer<QWidget> parent;
    QString title;
    QString text;
    QList<Action> actions = {};
};

/// Records boxes instead of showing them. For tests; nested ones are destroyed in reverse order.
class Recorder
{
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    const std::vector<Call>& calls() const { return m_calls; }
    const std::vector<Question>& questions() const { return m_questions; }

    /// Of ask(); Cancel by default.
    void setAnswer(const Answer& answer) { m_answer = answer; }

    void note(const Call& call) { m_calls.push_back(call); }
    Answer answer(const Question& question);

private:
    Recorder* m_previous;
    std::vector<Call> m_calls;
    std::vector<Question> m_questions;
    Answer m_answer;
};

} // namespace messagebox
