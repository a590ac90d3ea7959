// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/Record.h"

#include <QList>
#include <QString>

/// The tokens in @p folder, in the order of their names whatever the case: every visible file, or
/// link to one, whose name is UTF-8 and whose last suffix is "wav" in any case. Empty for a folder
/// that cannot be read; an empty name means the working directory.
QList<Record> tokensIn(const QString &folder);

/// An entry of a folder that is none of its tokens, and why.
struct LeftOut
{
    enum Reason {
        Folder,      ///< it is a folder, or a link to one
        OtherSuffix, ///< its name does not end as that of a token
        Hidden,      ///< its name begins with a dot
        Undecodable, ///< its name is not UTF-8
        Special,     ///< it is a pipe, a device, a link to nothing or the like
    };

    QString name;
    Reason reason;
};

/// The entries of @p folder that are not among @p tokens, which tokensIn() has listed there, in the
/// same order.
QList<LeftOut> leftOutOf(const QString &folder, const QList<Record> &tokens);
