#pragma once

#include <QPointer>
#include <QString>

#include <vector>

class QWidget;

/// Message boxes in the program's own look (":/res/style/message-box.qss"), each with an OK button. They run events
/// until the user closes them. parent may be null; title and text come translated. User-interface thread.
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

/// A question before something is deleted or lost. The texts come translated.
struct Question
{
    QPointer<QWidget> parent;
    QString title;
    QString text;
    /// Of the check box, which comes unchecked.
    QString checkText;
    /// Of the button that says yes, and that button's object name.
    QString buttonText;
    QString buttonName;
};

struct Answer
{
    bool confirmed = false;
    bool checked = false;
};

/// Asks with a check box, a button that says yes, and Cancel, which is the default and what Escape and closing mean.
Answer ask(const Question& question);

/// What one of the telling functions above was called with.
struct Call
{
    Kind kind;
    QPointer<QWidget> parent;
    QString title;
    QString text;
};

/// While it lives, boxes are not shown but noted here, and the functions return as if the user had pressed OK, or have
/// given the answer that is set. For tests. The one made last notes; they go in the reverse order of their making.
class Recorder
{
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// In the order in which they came.
    const std::vector<Call>& calls() const { return m_calls; }
    const std::vector<Question>& questions() const { return m_questions; }

    /// What ask() gives from now on; Cancel until then.
    void setAnswer(const Answer& answer) { m_answer = answer; }

    /// Called by the functions above.
    void note(const Call& call) { m_calls.push_back(call); }
    Answer answer(const Question& question);

private:
    Recorder* m_previous;
    std::vector<Call> m_calls;
    std::vector<Question> m_questions;
    Answer m_answer;
};

} // namespace messagebox
