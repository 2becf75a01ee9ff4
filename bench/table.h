// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdio>

/// A figure of a result T: a column of a table and a value in the JSON file. Negative figures are in neither.
template <typename T>
struct Column
{
    const char* title;
    const char* key;
    double T::*member;
    int digits;
};

inline void printRow(const QString& workload, const QString& name, const QStringList& cells)
{
    QString row = workload.leftJustified(11) + name.leftJustified(22);
    for (const QString& cell : cells)
        row += cell.rightJustified(11);
    std::printf("%s\n", qPrintable(row));
    std::fflush(stdout);
}

template <typename T, std::size_t count>
QStringList titles(const std::array<Column<T>, count>& columns)
{
    QStringList texts;
    for (const Column<T>& column : columns)
        texts.append(QLatin1String(column.title));
    return texts;
}

template <typename T, std::size_t count>
QStringList cells(const T& result, const std::array<Column<T>, count>& columns)
{
    QStringList texts;
    for (const Column<T>& column : columns) {
        const double value = result.*column.member;
        texts.append(value < 0 ? QStringLiteral("-") : QString::number(value, 'f', column.digits));
    }
    return texts;
}

template <typename T, std::size_t count>
void insertFigures(QJsonObject& object, const T& result, const std::array<Column<T>, count>& columns)
{
    for (const Column<T>& column : columns)
        if (result.*column.member >= 0)
            object.insert(QLatin1String(column.key), result.*column.member);
}
