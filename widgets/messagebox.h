// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointer>
#include <QString>

#include <vector>

class QWidget;

/// Modal message boxes in the program's look. parent may be null; texts are translated. User-interface thread.
namespace messagebox {

enum class Kind
{
    Information,
    Warning,
    Critical
};

void information(QWidget* parent, const QString& title, const QString& text);
void warning(QWidget* parent, const QString& title, const QString& text);
void critical(QWidget* parent, const QString& title, const QString& text);

struct Question
{
    QPointer<QWidget> parent;
    QString title;
    QString text;
    QString checkText;
    /// Text and object name of the button that confirms.
    QString buttonText;
    QString buttonName;
};

struct Answer
{
    bool confirmed = false;
    bool checked = false;
};

/// Shows an unchecked check box, a button that confirms, and Cancel, which is the default and what closing means.
Answer ask(const Question& question);

/// A call of information(), warning() or critical().
struct Call
{
    Kind kind;
    QPointer<QWidget> parent;
    QString title;
    QString text;
};

/// While it exists, boxes are recorded instead of shown. For tests. Nested recorders are destroyed in reverse order.
class Recorder
{
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    const std::vector<Call>& calls() const { return m_calls; }
    const std::vector<Question>& questions() const { return m_questions; }

    /// What ask() returns; Cancel by default.
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
