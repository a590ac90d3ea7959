// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/PresentationOrder.h"

#include <random>

std::optional<int> presentationCount(int nTokens, int nTimes)
{
    const qint64 count = nTimes > 0 ? static_cast<qint64>(nTokens) * nTimes : 0;
    if (count > maxPresentations)
        return std::nullopt;
    return static_cast<int>(count);
}

QList<int> presentationOrder(int nTokens, int nTimes, quint32 seed)
{
    QList<int> order;
    for (int round = 0; round < nTimes; ++round) {
        for (int token = 0; token < nTokens; ++token)
            order.append(token);
    }

    std::mt19937 generator(seed);
    for (qsizetype position = 0; position + 1 < order.size(); ++position) {
        const qsizetype behind = order.size() - 1 - position;
        const auto step = std::uniform_int_distribution<qsizetype>(0, behind)(generator);
        order.swapItemsAt(position, position + step);
    }
    return order;
}
