// SPDX-License-Identifier: GPL-3.0-or-later
#include "timing/Statistics.h"

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

double Statistics::mean() const
{
    double mean = 0;
    for (const double value : m_values)
        mean += value / static_cast<double>(m_values.size());
    return mean;
}

double Statistics::median() const
{
    if (m_values.empty())
        return 0;
    std::vector<double> sorted = m_values;
    std::ranges::sort(sorted);
    const size_t middle = sorted.size() / 2;
    return sorted.size() % 2 == 1 ? sorted[middle] : (sorted[middle - 1] + sorted[middle]) / 2;
}

double Statistics::sd() const
{
    if (m_values.size() < 2)
        return 0;
    const double center = mean();
    double variance = 0;
    for (const double value : m_values)
        variance += (value - center) * (value - center) / static_cast<double>(m_values.size() - 1);
    return std::sqrt(variance);
}

double Statistics::least() const
{
    return m_values.empty() ? 0 : *std::min_element(m_values.begin(), m_values.end());
}

double Statistics::most() const
{
    return m_values.empty() ? 0 : *std::max_element(m_values.begin(), m_values.end());
}

QString Statistics::text() const
{
    if (m_values.empty())
        return u"none"_s;
    if (m_values.size() == 1)
        return QString::asprintf("%+.2f", m_values.front());
    return QString::asprintf("%+.2f, %.2f, %+.2f .. %+.2f", mean(), sd(), least(), most());
}
