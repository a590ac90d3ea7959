// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QProcessEnvironment>

/// The environment of another program that uses sound: without what this program requests of the
/// sound server for its own streams.
inline QProcessEnvironment environmentOfOthers()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("PULSE_PROP");
    environment.remove("PIPEWIRE_PROPS");
    return environment;
}
