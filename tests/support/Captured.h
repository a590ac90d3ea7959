// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <ostream>
#include <sstream>
#include <streambuf>

/// Collects what is written to a standard stream, as long as it lives.
class Captured
{
public:
    explicit Captured(std::ostream &stream)
        : m_stream(stream)
        , m_before(stream.rdbuf(m_text.rdbuf()))
    {
    }
    ~Captured() { m_stream.rdbuf(m_before); }
    Captured(const Captured &) = delete;
    Captured &operator=(const Captured &) = delete;

    QByteArray text() const { return QByteArray::fromStdString(m_text.str()); }

private:
    std::ostringstream m_text;
    std::ostream &m_stream;
    std::streambuf *m_before;
};
