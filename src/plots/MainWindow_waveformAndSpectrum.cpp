// The waveform and spectrum charts. Declared in app/MainWindow.h.

#include "app/MainWindow.h"

void MainWindow::displayEmptyWav() {}

void MainWindow::displayEmptyFFT() {}

void MainWindow::displayWav() {}

void MainWindow::genFFT() {}

void MainWindow::displayFFT() {}
