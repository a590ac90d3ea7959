// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QChartView>

/// Shows a chart, up to its own edges, in the colours of the palette, light or dark, also when the
/// palette changes. Lines and bars keep their own colours. The tab key passes the chart by, as no
/// key does anything in it.
class PaletteChartView : public QChartView
{
    Q_OBJECT

public:
    /// @p chart must have its axes already.
    explicit PaletteChartView(QChart *chart);

protected:
    void changeEvent(QEvent *event) override;

private:
    void colour();
};
