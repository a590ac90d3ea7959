// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <span>
#include <vector>

/// Mean, median, standard deviation, smallest and largest of some values. Without values all are 0.
class Statistics
{
public:
    void add(double value) { m_values.push_back(value); }

    size_t count() const { return m_values.size(); }
    std::span<const double> values() const { return m_values; }

    double mean() const;
    double median() const; ///< of an even number of values the mean of the two in the middle
    double sd() const;     ///< with n - 1 in the denominator; of one value 0
    double least() const;
    double most() const;

    /// "mean, SD, min .. max" with two decimals; of one value that value alone, of none "none".
    QString text() const;

private:
    std::vector<double> m_values;
};
