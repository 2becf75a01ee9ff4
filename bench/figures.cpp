// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/figures.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

double millisecondsOf(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double middleOf(std::vector<double> values)
{
    if (values.empty())
        return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double middleOfRuns(int repeat, const std::function<double()>& measure)
{
    std::vector<double> values(static_cast<std::size_t>(repeat));
    std::generate(values.begin(), values.end(), measure);
    return middleOf(values);
}

bool writeJson(const QString& path, const QJsonObject& figures)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(figures).toJson()) > 0;
}
