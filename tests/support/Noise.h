// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "timing/NoiseToken.h"

#include <QByteArray>
#include <QList>

/// @p samples as a 16-bit WAV file at 48 kHz.
QByteArray wavBytes(const QList<double> &samples);
