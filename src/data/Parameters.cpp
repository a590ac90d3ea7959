// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/Parameters.h"

#include <QJsonArray>
#include <QLatin1String>
#include <QVariant>

namespace {

template<typename Value>
QJsonValue toJson(const Value &value)
{
    return value;
}

QJsonValue toJson(const QStringList &value)
{
    return QJsonArray::fromStringList(value);
}

void fromJson(const QJsonValue &json, double &value)
{
    value = json.toDouble();
}

void fromJson(const QJsonValue &json, qint32 &value)
{
    value = json.toInt();
}

void fromJson(const QJsonValue &json, bool &value)
{
    value = json.toBool();
}

void fromJson(const QJsonValue &json, QString &value)
{
    value = json.toString();
}

void fromJson(const QJsonValue &json, QStringList &value)
{
    value = json.toVariant().toStringList();
}

} // namespace

QJsonObject parametersToJson(const Data &data)
{
    QJsonObject json;
    forEachParameter(data, [&json](const char *name, const auto &value) {
        json.insert(QLatin1String(name), toJson(value));
    });
    return json;
}

void parametersFromJson(const QJsonObject &json, Data &data)
{
    forEachParameter(data, [&json](const char *name, auto &value) {
        fromJson(json.value(QLatin1String(name)), value);
    });
}
