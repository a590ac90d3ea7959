// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBuffer>

/// A sink's source that has nothing more to read after its last byte but never says that it has
/// ended, so that the server fills in silence.
///
/// At the end of its source, the sink of Qt 6.4 asks the server to play the stream out. The answer
/// is handed to the sink by the server's thread, even when the sink has been reset and deleted in
/// the meantime, and the program then ends by a segmentation fault.
class UnendingBuffer : public QBuffer
{
public:
    using QBuffer::QBuffer;

    bool atEnd() const override { return false; }
};
