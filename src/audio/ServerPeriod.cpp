// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/ServerPeriod.h"

#include <QByteArray>
#include <QtGlobal>

void requestServerPeriod()
{
    const QByteArray ofUser = qgetenv("PULSE_PROP");
    if (!ofUser.contains("node.force-quantum"))
        qputenv("PULSE_PROP", "node.force-quantum=2048 " + ofUser);
    if (!qEnvironmentVariableIsSet("PIPEWIRE_PROPS"))
        qputenv("PIPEWIRE_PROPS", "{ node.force-quantum = 2048 }");
}
