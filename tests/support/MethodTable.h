// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QStringList>

/// The signals and slots that a class adds to its base, in the order of their declaration: kind and
/// signature. Qt's names of number types are replaced by the language's, since Qt versions differ.
inline QStringList methodTable(const QMetaObject &meta)
{
    QStringList table;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        QByteArrayList types;
        for (int parameter = 0; parameter < method.parameterCount(); ++parameter) {
            const QMetaType type = method.parameterMetaType(parameter);
            types.append(type.id() < QMetaType::User ? QByteArray(type.name())
                                                     : method.parameterTypes().at(parameter));
        }
        const bool isSignal = method.methodType() == QMetaMethod::Signal;
        const bool isPublic = method.access() == QMetaMethod::Public;
        table.append(QString("%1%2 %3(%4)")
                         .arg(isPublic ? "" : "hidden ", isSignal ? "signal" : "slot",
                              method.name(), types.join(',')));
    }
    return table;
}
