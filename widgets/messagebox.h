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

/// What one of the functions above was called with.
struct Call
{
    Kind kind;
    QPointer<QWidget> parent;
    QString title;
    QString text;
};

/// While it lives, boxes are not shown but noted here, and the functions return as if the user had pressed OK. For
/// tests. The one made last notes; they go in the reverse order of their making.
class Recorder
{
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// In the order in which they came.
    const std::vector<Call>& calls() const { return m_calls; }

    /// Called by the functions above.
    void note(const Call& call) { m_calls.push_back(call); }

private:
    Recorder* m_previous;
    std::vector<Call> m_calls;
};

} // namespace messagebox
