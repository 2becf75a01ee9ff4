// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSize>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>

class QLineEdit;

/// The fields for width and height, in physical pixels. They show a size; what is typed instead counts when Enter is
/// pressed. What cannot be is marked until it is corrected. Escape restores what was shown, and so does leaving both
/// fields. User-interface thread.
class SizeFields : public QObject
{
    Q_OBJECT

public:
    /// What can be typed at the moment.
    struct Rules
    {
        QSize smallest;
        QSize largest;
        /// Width by height, or 0: otherwise the other length follows from the one that is typed.
        double ratio = 0.0;
    };

    /// @param rules asked for when Enter is pressed
    SizeFields(QLineEdit& width, QLineEdit& height, std::function<Rules()> rules);

    /// The same size again leaves what is being typed.
    void show(const QSize& size);

    /// Whether that is what the fields say, also while something else is typed.
    bool shows(const QSize& size) const { return m_shown == size; }

    /// What was shown last.
    void restore();

    /// Read-only fields look so.
    void setEditable(bool editable);

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void entered(const QSize& size);
    /// @param reason translated
    void refused(const QString& reason);

private:
    enum Length : std::size_t
    {
        Width,
        Height
    };
    struct Range
    {
        int smallest;
        int largest;
    };

    void enter(Length pressed);
    std::optional<QSize> enteredSize(Length leading, const Rules& rules);
    std::optional<QSize> sizeAtRatio(Length leading, const Rules& rules);
    std::optional<int> lengthIn(Length length, const Range& range);
    Length leadingOf(Length pressed) const;
    bool isChanged() const;
    bool keepsFocus(const QEvent& event) const;
    void setMark(QLineEdit& field, const QString& reason);

    std::array<QLineEdit*, 2> m_fields;
    std::function<Rules()> m_rules;
    QSize m_shown;
    /// Of what was typed last; empty when nothing was wrong.
    QString m_refusal;
};
