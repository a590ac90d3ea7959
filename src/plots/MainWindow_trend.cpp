// The response trend chart. Declared in app/MainWindow.h.

#include "app/MainWindow.h"

void MainWindow::displayEmptyTrend() {}

void MainWindow::updateTrend()
{
    if (trialIndex == 0 && nTokens > 0) {
        trendX.resize(nTokens);
        trendY.resize(nTokens);
        trendPoints.resize(nTokens);
        for (qint32 i = 0; i < nTokens; ++i) {
            trendX[i] = i + 1;
            trendY[i] = 0;
            trendPoints[i] = QPointF(i + 1, 0);
        }
    }
}
