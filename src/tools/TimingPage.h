// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tools/TimingMeasurement.h"

#include <QWidget>

class QBarCategoryAxis;
class QBarSeries;
class QChartView;
class QComboBox;
class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;
class QTableWidget;
class QValueAxis;

/// Measures the timing of this machine, shows the result while it measures, and saves the report.
class TimingPage : public QWidget
{
    Q_OBJECT

public:
    explicit TimingPage(QWidget *parent = nullptr);

protected:
    /// Asks for the inputs that there are now.
    void showEvent(QShowEvent *event) override;

private:
    void build();
    QChartView *createHistogram();
    void listInputs();
    void start();
    void stop();
    void showReport();
    void showResult();
    void showRunning();
    void copySentence();
    void saveReport();

    TimingMeasurement m_measurement;
    QComboBox *m_comboBoxSource = nullptr; ///< its data are names of inputs; empty for the output
    QSpinBox *m_spinBoxPlays = nullptr;
    QPushButton *m_pushButtonStart = nullptr;
    QPushButton *m_pushButtonStop = nullptr;
    QProgressBar *m_progressBar = nullptr;
    QLabel *m_labelIcon = nullptr;
    QLabel *m_labelVerdict = nullptr;
    QTableWidget *m_table = nullptr;
    QBarSeries *m_bars = nullptr;
    QBarCategoryAxis *m_binAxis = nullptr;
    QValueAxis *m_countAxis = nullptr;
    QPlainTextEdit *m_textSentence = nullptr;
    QPushButton *m_pushButtonCopy = nullptr;
    QPushButton *m_pushButtonSave = nullptr;
};
